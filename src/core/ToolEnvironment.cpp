#include "core/ToolEnvironment.h"

#include "platform/Paths.h"
#include "platform/SearchPath.h"

#include <QDir>
#include <QFileInfo>
#include <QVersionNumber>

#include <algorithm>
#include <functional>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// A folder for each version of Node, the newest first.
QStringList nvmFolders(const QString &versions)
{
    QStringList names = QDir(versions).entryList({u"v*"_s}, QDir::Dirs);
    std::ranges::sort(names, std::greater(), [](const QString &name) {
        return QVersionNumber::fromString(QStringView(name).mid(1));
    });
    for (QString &name : names) {
        name = versions + u'/' + name + u"/bin"_s;
    }
    return names;
}

} // namespace

QString toolSearchPath()
{
    return withoutOpenFolders(u"/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin"_s);
}

QStringList userToolFolders()
{
    const QString home = homeDirectory();
    QStringList folders{home + u"/.npm-global/bin"_s, home + u"/.local/bin"_s};
    folders += nvmFolders(home + u"/.nvm/versions/node"_s);
    folders +=
        {home + u"/.volta/bin"_s, home + u"/.local/share/pnpm"_s,      home + u"/.bun/bin"_s,
         u"/snap/bin"_s,          u"/home/linuxbrew/.linuxbrew/bin"_s, home + u"/.linuxbrew/bin"_s};
    folders.removeIf([](const QString &folder) { return !QFileInfo(folder).isDir(); });
    return folders;
}

QStringList gatewayToolPlaces()
{
    return {u"/opt/homebrew/bin/duskrell"_s, u"/usr/local/bin/duskrell"_s};
}

std::optional<QString> findUserTool(const QString &name)
{
    for (const QString &folder : userToolFolders()) {
        QString path = folder + u'/' + name;
        const QFileInfo file(path);
        if (file.isFile() && file.isExecutable() && isTrustworthyFile(path)) {
            return path;
        }
    }
    return std::nullopt;
}

std::optional<QString> findTool(const QString &name, const QString &searchPath)
{
    const auto onPath = findProgram(name, searchPath);
    return onPath ? onPath : findUserTool(name);
}

std::optional<QString> findTool(const QStringList &places, const QString &name,
                                const QString &searchPath)
{
    const auto known = std::ranges::find_if(places, isTrustworthyFile);
    return known != places.end() ? std::optional(*known) : findTool(name, searchPath);
}

QString toolSearchPath(const QString &program)
{
    QStringList folders = userToolFolders();
    const QString own = QFileInfo(program).path();
    if (folders.removeAll(own) == 0) {
        return toolSearchPath();
    }
    return withoutOpenFolders((QStringList{own, toolSearchPath()} + folders).join(u':'));
}

QProcessEnvironment toolEnvironment(const QString &searchPath)
{
    QProcessEnvironment environment;
    environment.insert(u"PATH"_s, searchPath);
    environment.insert(u"HOME"_s, homeDirectory());
    return environment;
}

} // namespace ostrelle
