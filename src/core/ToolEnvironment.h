#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <optional>

namespace ostrelle
{

// The search path for tools, the same in every desktop session. It also has the folders of other
// systems, which do no harm here. Folders that anybody may write to are left out.
QString toolSearchPath();

// Where the installers that Linux users have put tools, for all users or for this one: npm, nvm
// (its newest version of Node first), volta, pnpm, bun, snap, Linuxbrew and pip. Only folders that
// are there. To be looked at after every place that is named elsewhere. Looks at the disk.
QStringList userToolFolders();

// The first tool of that name in those folders; absent when there is none. Looks at the disk.
std::optional<QString> findUserTool(const QString &name);

// The first tool of that name on the search path, or else in those folders. Looks at the disk.
std::optional<QString> findTool(const QString &name, const QString &searchPath);

// The first of these places at which there is something that is not for anybody to write, or else
// the same.
std::optional<QString> findTool(const QStringList &places, const QString &name,
                                const QString &searchPath);

// Where the gateway's tool is looked for before a search path, in this order.
QStringList gatewayToolPlaces();

// The search path for a tool: toolSearchPath(), but for one from those folders its own folder comes
// first and the others of them last. For it is often a script that begins with
// "#!/usr/bin/env node", and Node is beside it.
QString toolSearchPath(const QString &program);

// All that a tool gets to see of this program's environment: PATH and HOME.
QProcessEnvironment toolEnvironment(const QString &searchPath = toolSearchPath());

} // namespace ostrelle
