#include "platform/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <sys/statvfs.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString homeDirectory()
{
    return QDir::homePath();
}

std::optional<QString> resourceDirectory()
{
    const QDir program(QCoreApplication::applicationDirPath());
    for (const QString &candidate : {u"../share/ostrelle"_s, u"resources"_s}) {
        QString path = QDir::cleanPath(program.absoluteFilePath(candidate));
        if (QFileInfo(path).isDir()) {
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

std::optional<QString> privateTemporaryDirectory()
{
    struct statvfs mount{};
    if (const auto runtime = runtimeDirectory();
        runtime && ::statvfs(QFile::encodeName(*runtime).constData(), &mount) == 0 &&
        (mount.f_flag & ST_NOEXEC) == 0) {
        return runtime;
    }
    QTemporaryDir fresh; // of mode 0700
    fresh.setAutoRemove(false);
    return fresh.isValid() ? std::optional(fresh.path()) : std::nullopt;
}

} // namespace ostrelle
