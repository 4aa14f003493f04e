#pragma once

#include <QProcessEnvironment>
#include <QString>

namespace ostrelle
{

// Where tools are looked for, whatever the desktop session has: other systems' places do no harm.
// Folders that anybody may write to are left out.
QString toolSearchPath();

// All that a tool gets to see of this program's environment: PATH and HOME.
QProcessEnvironment toolEnvironment(const QString &searchPath = toolSearchPath());

} // namespace ostrelle
