#include "core/ExpandPath.h"

#include "platform/Paths.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString expandPath(const QString &path)
{
    return path.startsWith("~/"_L1) ? homeDirectory() + path.sliced(1) : path;
}

} // namespace ostrelle
