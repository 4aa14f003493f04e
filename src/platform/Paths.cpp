#include "platform/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

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

} // namespace ostrelle
