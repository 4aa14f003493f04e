#include "platform/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

bool allowsPrograms(const QString &directory)
{
    struct statvfs mount{};
    return ::statvfs(QFile::encodeName(directory).constData(), &mount) == 0 &&
           (mount.f_flag & ST_NOEXEC) == 0;
}

// True when the directory is there, or was made, and nobody else can enter it.
bool makePrivate(const QString &directory)
{
    QDir().mkpath(QFileInfo(directory).path());
    const QByteArray name = QFile::encodeName(directory);
    if (::mkdir(name.constData(), S_IRWXU) != 0 && errno != EEXIST) {
        return false;
    }
    struct stat attributes{};
    return ::lstat(name.constData(), &attributes) == 0 && S_ISDIR(attributes.st_mode) &&
           attributes.st_uid == ::geteuid() && ::chmod(name.constData(), S_IRWXU) == 0;
}

} // namespace

QString homeDirectory()
{
    return QDir::homePath();
}

void settleProgramPlace()
{
    static_cast<void>(QCoreApplication::applicationDirPath()); // the other place comes with it
}

std::optional<QString> resourceDirectory()
{
    const QDir program(QCoreApplication::applicationDirPath());
    for (const char *candidate : {OSTRELLE_INSTALLED_RESOURCES, "resources"}) {
        QString path = QDir::cleanPath(program.absoluteFilePath(QString::fromUtf8(candidate)));
        if (!QDir(path).isEmpty()) {
            return path;
        }
    }
    return std::nullopt;
}

std::optional<QString> runtimeDirectory()
{
    QString path = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (path.isEmpty()) {
        return std::nullopt;
    }
    return path;
}

std::optional<QString> privateHomeDirectory()
{
    const QString directory = homeDirectory() + u"/.ostrelle/run"_s;
    return makePrivate(directory) ? std::optional(directory) : std::nullopt;
}

QStringList privateTemporaryPlaces()
{
    QStringList places{homeDirectory() + u"/.ostrelle/run"_s};
    if (const auto runtime = runtimeDirectory()) {
        places.prepend(*runtime);
    }
    return places;
}

std::optional<QString> privateTemporaryDirectory()
{
    for (const QString &place : privateTemporaryPlaces()) {
        if (makePrivate(place) && allowsPrograms(place)) {
            return place;
        }
    }
    return std::nullopt;
}

} // namespace ostrelle
