#pragma once

#include <QRect>

namespace ostrelle
{

// One monitor: all of it, and the part that no bar takes.
struct ScreenPlace {
    QRect whole;
    QRect available;
};

// Where the panel of that size stands beside the tray icon: on the icon's inner side, in its
// middle, and inside the available part of its monitor, made smaller where that is too small. With
// an empty icon rectangle, of an icon whose place nobody knows, in the corner where trays are.
QRect placePanel(const QRect &icon, const ScreenPlace &screen, QSize size);

// The icon under a pointer that has clicked it. In a bar that takes no room for itself, because it
// hides or because nobody tells its room, it is as large as icons get: the panel must not cover it.
QRect iconUnder(QPoint pointer, const ScreenPlace &screen);

// Whether a pointer there may be on a bar.
bool isAtEdge(QPoint pointer, const ScreenPlace &screen);

} // namespace ostrelle
