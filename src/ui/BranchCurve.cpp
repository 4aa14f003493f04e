#include "ui/BranchCurve.h"

#include <QPainter>
#include <QPainterPath>

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

std::array<QPointF, 4> BranchCurve::bezier() const
{
    const qreal margin = m_thickness; // the line's own width stays inside
    const qreal level = height() - margin;
    const qreal controls = level - (level - margin) / 0.75; // the curve goes three quarters there
    const qreal spine = m_toLeft ? width() : 0;
    const qreal agent = width() - spine;
    const qreal way = agent - spine;
    return {QPointF(spine, level), QPointF(spine + 0.2 * way, controls),
            QPointF(spine + 0.6 * way, controls), QPointF(agent, level)};
}

QPointF BranchCurve::pointAt(qreal part) const
{
    const auto [spine, first, second, agent] = bezier();
    const qreal left = 1 - part;
    return left * left * left * spine + 3 * left * left * part * first +
           3 * left * part * part * second + part * part * part * agent;
}

void BranchCurve::paint(QPainter *painter)
{
    painter->setPen(QPen(m_color, m_thickness, Qt::SolidLine, Qt::RoundCap));
    const auto [spine, first, second, agent] = bezier();
    QPainterPath line(spine);
    line.cubicTo(first, second, agent);
    painter->drawPath(line);
}

} // namespace ostrelle

#include "moc_BranchCurve.cpp"
