#include "platform/SearchPath.h"

#include "platform/Log.h"
#include "platform/NeverDestroyed.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStringList>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <sys/stat.h>
#include <system_error>
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

// Whether somebody else could exchange this entry of the folder. In one like /tmp only its owner
// may touch it.
bool somebodyMayReplace(const QString &folder, const struct stat &entry)
{
    struct stat attributes{};
    if (::stat(QFile::encodeName(folder).constData(), &attributes) != 0) {
        return true;
    }
    const bool isOurs = entry.st_uid == 0 || entry.st_uid == ::geteuid();
    return (attributes.st_mode & S_IWOTH) != 0 && ((attributes.st_mode & S_ISVTX) == 0 || !isOurs);
}

// Of a symbolic link, as it stands there.
QString rawTarget(const QString &link)
{
    std::error_code error;
    const auto target =
        std::filesystem::read_symlink(QFile::encodeName(link).constData(), error).string();
    return QFile::decodeName(QByteArray::fromStdString(target));
}

// Whether somebody else decides what is at the end of the path, in which each link is followed.
bool somebodyMayRedirect(const QString &path)
{
    constexpr int mostLinks = 40;
    QStringList ahead = path.split(u'/', Qt::SkipEmptyParts);
    QString folder; // as seen from the root, without links; empty for the root
    int links = 0;
    while (!ahead.isEmpty()) {
        const QString name = ahead.takeFirst();
        if (name == "."_L1 || name == ".."_L1) {
            folder.truncate(name == ".."_L1 ? std::max<qsizetype>(folder.lastIndexOf(u'/'), 0)
                                            : folder.size());
            continue;
        }
        const QString entry = folder + u'/' + name;
        struct stat attributes{};
        if (::lstat(QFile::encodeName(entry).constData(), &attributes) != 0 ||
            somebodyMayReplace(folder + u'/', attributes)) {
            return true;
        }
        if (!S_ISLNK(attributes.st_mode)) {
            folder = entry;
            continue;
        }
        const QString target = rawTarget(entry);
        if (++links > mostLinks) {
            return true;
        }
        ahead = target.split(u'/', Qt::SkipEmptyParts) + ahead;
        folder = target.startsWith(u'/') ? QString() : folder;
    }
    return false;
}

bool isOpenFolder(const QString &folder)
{
    return QFileInfo::exists(folder) && (anybodyMayWrite(folder) || somebodyMayRedirect(folder));
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
                        isOpenFolder(QFileInfo(target).path()) ||
                        somebodyMayRedirect(QFileInfo(path).absoluteFilePath());
    if (isOpen) {
        ToldPaths::tell(path);
    }
    return !isOpen;
}

} // namespace ostrelle
