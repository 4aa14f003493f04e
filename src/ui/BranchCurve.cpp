#include "ui/BranchCurve.h"

#include <QPainter>

#include <algorithm>

namespace ostrelle
{

BranchCurve::BranchCurve(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void BranchCurve::setColor(const QColor &color)
{
    if (m_color != color) {
        m_color = color;
        update();
        Q_EMIT colorChanged();
    }
}

void BranchCurve::setThickness(qreal thickness)
{
    if (m_thickness != thickness) {
        m_thickness = thickness;
        update();
        Q_EMIT thicknessChanged();
    }
}

void BranchCurve::setToLeft(bool toLeft)
{
    if (m_toLeft != toLeft) {
        m_toLeft = toLeft;
        update();
        Q_EMIT toLeftChanged();
    }
}

QPainterPath BranchCurve::line() const
{
    const qreal margin = m_thickness; // the line's own width stays inside
    const QPointF spine(m_toLeft ? width() : 0, margin);
    const QPointF agent(m_toLeft ? 0 : width(), height() - margin);
    QPainterPath line(spine);
    line.cubicTo({width() / 2, spine.y()}, {width() / 2, agent.y()}, agent);
    return line;
}

QPointF BranchCurve::pointAt(qreal part) const
{
    return line().pointAtPercent(std::clamp(part, 0.0, 1.0));
}

void BranchCurve::paint(QPainter *painter)
{
    painter->setPen(QPen(m_color, m_thickness, Qt::SolidLine, Qt::RoundCap));
    painter->drawPath(line());
}

} // namespace ostrelle
