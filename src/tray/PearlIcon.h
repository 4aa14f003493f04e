#pragma once

#include <QIcon>

namespace ostrelle
{

// The pearl as an icon that is sharp at every size and device pixel ratio. Each size is drawn once.
QIcon pearlIcon(const QColor &color);

} // namespace ostrelle
