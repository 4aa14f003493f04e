#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqml.h>

#include <array>

namespace ostrelle
{

// A line from the spine to an agent, from one lower corner of the item to the other. It bows
// upwards like a rib, as high as the item. It is painted only when it changes. Main thread only.
class BranchCurve : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(qreal thickness READ thickness WRITE setThickness NOTIFY thicknessChanged)
    // Whether the agent is on the left.
    Q_PROPERTY(bool toLeft READ toLeft WRITE setToLeft NOTIFY toLeftChanged)

public:
    explicit BranchCurve(QQuickItem *parent = nullptr);

    QColor color() const { return m_color; }
    void setColor(const QColor &color);
    qreal thickness() const { return m_thickness; } // in pixels
    void setThickness(qreal thickness);
    bool toLeft() const { return m_toLeft; }
    void setToLeft(bool toLeft);

    // The point on the line after about that part of the way: 0 is the spine, 1 the agent.
    Q_INVOKABLE QPointF pointAt(qreal part) const;

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void colorChanged();
    void thicknessChanged();
    void toLeftChanged();

private:
    std::array<QPointF, 4> bezier() const;

    QColor m_color;
    qreal m_thickness = 1;
    bool m_toLeft = false;
};

} // namespace ostrelle
