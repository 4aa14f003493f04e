#pragma once

#include <QProcessEnvironment>
#include <QString>

namespace ostrelle
{

// The search path for tools, the same in every desktop session. It also has the folders of other
// systems, which do no harm here. Folders that anybody may write to are left out.
QString toolSearchPath();

// All that a tool gets to see of this program's environment: PATH and HOME.
QProcessEnvironment toolEnvironment(const QString &searchPath = toolSearchPath());

} // namespace ostrelle
