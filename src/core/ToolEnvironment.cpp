#include "core/ToolEnvironment.h"

#include "platform/Paths.h"
#include "platform/SearchPath.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString toolSearchPath()
{
    return withoutOpenFolders(u"/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin"_s);
}

QProcessEnvironment toolEnvironment(const QString &searchPath)
{
    QProcessEnvironment environment;
    environment.insert(u"PATH"_s, searchPath);
    environment.insert(u"HOME"_s, homeDirectory());
    return environment;
}

} // namespace ostrelle
