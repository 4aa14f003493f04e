#pragma once

#include <QColor>
#include <QImage>
#include <QSizeF>
#include <QString>

namespace ostrelle
{

// What the pearl says: grey at half opacity while the gateway cannot be reached, white while the
// voice agent does not run, else the colour of the agent's state word (exact, in lower case).
QColor pearlColor(bool gatewayOnline, bool voiceRunning, const QString &voiceState);

// A glossy sphere in that colour; the colour's opacity does not count. `size` is in points, of
// which each has `devicePixelRatio` pixels. Null for an empty size.
QImage renderPearl(const QColor &color, QSizeF size, qreal devicePixelRatio = 1);

} // namespace ostrelle
