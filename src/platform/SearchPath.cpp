#include "platform/SearchPath.h"

#include "platform/Log.h"
#include "platform/NeverDestroyed.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStringList>

#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// What was told already: a poll comes by every few seconds.
class ToldPaths
{
public:
    static void tell(const QString &path)
    {
        static NeverDestroyed<ToldPaths> told;
        ToldPaths &paths = told.object();
        const std::scoped_lock lock(paths.m_mutex);
        if (!paths.m_paths.contains(path)) {
            paths.m_paths.insert(path);
            logLine(u"[Ostrelle] Passed over, because anybody may write there: "_s + path);
        }
    }

private:
    std::mutex m_mutex;
    QSet<QString> m_paths; // protected by m_mutex
};

bool anybodyMayWrite(const QString &path)
{
    struct stat attributes{};
    return ::stat(QFile::encodeName(path).constData(), &attributes) == 0 &&
           (attributes.st_mode & S_IWOTH) != 0;
}

// What anybody may exchange on the way to a folder; nothing for those on which only the owner of an
// entry may touch it, as in /tmp.
bool anybodyMayReplace(const QString &folder)
{
    struct stat attributes{};
    return ::stat(QFile::encodeName(folder).constData(), &attributes) == 0 &&
           (attributes.st_mode & S_IWOTH) != 0 && (attributes.st_mode & S_ISVTX) == 0;
}

bool isOpenFolder(const QString &folder)
{
    if (anybodyMayWrite(folder)) {
        return true;
    }
    QString above = QFileInfo(folder).canonicalFilePath();
    while (!above.isEmpty() && above != "/"_L1) {
        if (anybodyMayReplace(above)) {
            return true;
        }
        above = QFileInfo(above).path();
    }
    return false;
}

} // namespace

QString withoutOpenFolders(const QString &searchPath)
{
    QStringList safe;
    for (const QString &folder : searchPath.split(u':')) {
        if (!folder.startsWith(u'/')) {
            continue;
        }
        if (isOpenFolder(folder)) {
            ToldPaths::tell(folder);
        } else {
            safe.append(folder);
        }
    }
    return safe.isEmpty() ? u"/usr/bin:/bin"_s : safe.join(u':');
}

std::optional<QString> findProgram(const QString &name, const QString &searchPath)
{
    for (const QString &folder : withoutOpenFolders(searchPath).split(u':', Qt::SkipEmptyParts)) {
        QString path = folder + u'/' + name;
        const QFileInfo file(path);
        if (file.isFile() && file.isExecutable() && isTrustworthyFile(path)) {
            return path;
        }
    }
    return std::nullopt;
}

bool isTrustworthyFile(const QString &path)
{
    const QString target = QFileInfo(path).canonicalFilePath(); // empty where nothing is
    if (target.isEmpty()) {
        return false;
    }
    const bool isOpen = anybodyMayWrite(target) || isOpenFolder(QFileInfo(path).path()) ||
                        isOpenFolder(QFileInfo(target).path());
    if (isOpen) {
        ToldPaths::tell(path);
    }
    return !isOpen;
}

} // namespace ostrelle
