#include "tray/PanelPlacement.h"

#include <algorithm>
#include <array>

namespace ostrelle
{

namespace
{

constexpr int gap = 4; // between the icon and the panel
constexpr int largestIcon = 48;

// The edge of the monitor that the bar with the icon lies at. In a corner of a monitor whose bars
// take no room it is the upper or lower one, where more people have theirs.
Qt::Edge edgeOf(const QRect &icon, const ScreenPlace &screen)
{
    const QRect &inside = screen.available;
    const std::array distances{
        std::pair(inside.top() - icon.bottom(), Qt::TopEdge),
        std::pair(icon.top() - inside.bottom(), Qt::BottomEdge),
        std::pair(inside.left() - icon.right(), Qt::LeftEdge),
        std::pair(icon.left() - inside.right(), Qt::RightEdge),
    };
    // Outside the available part, or else nearest to its end.
    const auto nearest = std::ranges::max(distances, {}, &std::pair<int, Qt::Edge>::first);
    const auto flat = std::max(distances[0], distances[1]);
    return nearest.first <= 0 && flat.first > -largestIcon ? flat.second : nearest.second;
}

QPoint beside(const QRect &icon, Qt::Edge edge, QSize size)
{
    const int left = icon.center().x() - size.width() / 2;
    const int top = icon.center().y() - size.height() / 2;
    switch (edge) {
    case Qt::TopEdge:
        return {left, icon.bottom() + 1 + gap};
    case Qt::BottomEdge:
        return {left, icon.top() - gap - size.height()};
    case Qt::LeftEdge:
        return {icon.right() + 1 + gap, top};
    case Qt::RightEdge:
        return {icon.left() - gap - size.width(), top};
    }
    Q_UNREACHABLE();
}

// A bar at the bottom is wider than one at the top, where both are.
QPoint cornerOfTrays(const ScreenPlace &screen, QSize size)
{
    const QRect &inside = screen.available;
    const bool atBottom =
        screen.whole.bottom() - inside.bottom() > inside.top() - screen.whole.top();
    const QPoint corner = atBottom ? inside.bottomRight() : inside.topRight();
    return {corner.x() + 1 - size.width() - gap,
            atBottom ? corner.y() + 1 - size.height() - gap : corner.y() + gap};
}

} // namespace

QRect iconUnder(QPoint pointer, const ScreenPlace &screen)
{
    const int side = screen.available.contains(pointer) ? largestIcon : 1; // on a bar it is known
    QRect icon(QPoint(), QSize(side, side));
    icon.moveCenter(pointer);
    return icon;
}

bool isAtEdge(QPoint pointer, const ScreenPlace &screen)
{
    constexpr QMargins bars(largestIcon, largestIcon, largestIcon, largestIcon);
    return !screen.available.contains(pointer) || !(screen.whole - bars).contains(pointer);
}

QRect placePanel(const QRect &icon, const ScreenPlace &screen, QSize size)
{
    const QRect &inside = screen.available;
    const QSize bounded = size.boundedTo(inside.size());
    const QPoint place = icon.isEmpty() ? cornerOfTrays(screen, bounded)
                                        : beside(icon, edgeOf(icon, screen), bounded);
    return {QPoint(std::clamp(place.x(), inside.left(), inside.right() + 1 - bounded.width()),
                   std::clamp(place.y(), inside.top(), inside.bottom() + 1 - bounded.height())),
            bounded};
}

} // namespace ostrelle
