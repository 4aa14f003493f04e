#include "tray/PanelPlacement.h"

#include <algorithm>
#include <array>

namespace ostrelle
{

namespace
{

constexpr int gap = 4; // between the icon and the panel

// The edge of the monitor that the bar with the icon lies at.
Qt::Edge edgeOf(const QRect &icon, const ScreenPlace &screen)
{
    const QRect &inside = screen.available;
    const std::array distances{
        std::pair(inside.top() - icon.bottom(), Qt::TopEdge),
        std::pair(icon.top() - inside.bottom(), Qt::BottomEdge),
        std::pair(inside.left() - icon.right(), Qt::LeftEdge),
        std::pair(icon.left() - inside.right(), Qt::RightEdge),
    };
    // Outside the available part, or else nearest to its end: a bar may take no room for itself.
    return std::ranges::max(distances, {}, &std::pair<int, Qt::Edge>::first).second;
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
