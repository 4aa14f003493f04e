#include "tray/Pearl.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr double paleLuminance = 0.75; // from here on a pearl needs help on a light background

QColor white(double opacity)
{
    return QColor::fromRgbF(1, 1, 1, static_cast<float>(opacity));
}

// The sphere about the origin, in a plane whose y axis points up.
class Pearl
{
public:
    Pearl(const QColor &color, double radius)
        : r(radius)
        , m_color(QColor::fromRgbF(color.redF(), color.greenF(), color.blueF()))
        , m_isPale(luminance() > paleLuminance)
    {
        m_circle.addEllipse(QPointF(), r, r);
    }

    void paint(QPainter &painter) const
    {
        painter.setRenderHint(QPainter::Antialiasing);
        paintBody(painter);
        paintSheen(painter);
        paintReflections(painter);
        paintHighlight(painter, {-0.35 * r, 0.2 * r}, {0.7 * r, 0.45 * r}, 0.75);
        paintHighlight(painter, {-0.28 * r, 0.38 * r}, {0.24 * r, 0.24 * r}, 0.95);
        paintRim(painter);
        if (m_isPale) {
            paintOutline(painter);
        }
    }

private:
    double luminance() const
    {
        return 0.299 * m_color.redF() + 0.587 * m_color.greenF() + 0.114 * m_color.blueF();
    }

    QColor channels(double factor, double addend, double opacity = 1) const
    {
        const auto channel = [&](double value) {
            return static_cast<float>(std::min(1.0, value * factor + addend));
        };
        return QColor::fromRgbF(channel(m_color.redF()), channel(m_color.greenF()),
                                channel(m_color.blueF()), static_cast<float>(opacity));
    }

    QColor shade(double opacity = 1) const { return channels(m_isPale ? 0.35 : 0.55, 0, opacity); }

    QColor muted(double opacity) const { return channels(0.65, 0, opacity); }

    void paintBody(QPainter &painter) const
    {
        QRadialGradient body({0, 0}, 1.1 * r, {-0.2 * r, 0.25 * r});
        body.setColorAt(0, channels(1.1, 0.15));
        body.setColorAt(0.55, m_color);
        body.setColorAt(1, shade());
        painter.fillPath(m_circle, body);
    }

    void paintSheen(QPainter &painter) const
    {
        QLinearGradient sheen({-r, 0.3 * r}, {r, -0.3 * r});
        sheen.setColorAt(0, white(0));
        sheen.setColorAt(0.5, white(0.12));
        sheen.setColorAt(1, white(0));
        painter.fillPath(m_circle, sheen);
    }

    void paintReflections(QPainter &painter) const
    {
        const double opacity = m_isPale ? 0.3 : 0.15;
        paintReflection(painter, {-0.9 * r, -1.1 * r, 1.8 * r, 1.2 * r}, muted(opacity));
        paintReflection(painter, {-1.05 * r, -0.5 * r, 0.5 * r, 1.4 * r}, shade(0.6 * opacity));
        paintReflection(painter, {0.55 * r, -0.4 * r, 0.5 * r, 1.2 * r}, shade(0.5 * opacity));
    }

    void paintReflection(QPainter &painter, const QRectF &bounds, const QColor &color) const
    {
        QPainterPath ellipse;
        ellipse.addEllipse(bounds);
        painter.fillPath(ellipse.intersected(m_circle), color);
    }

    // Light that fades from the middle of an ellipse to the end of its longer half axis.
    static void paintHighlight(QPainter &painter, QPointF centre, QSizeF axes, double opacity)
    {
        QRadialGradient light(centre, axes.width() / 2);
        light.setColorAt(0, white(opacity));
        light.setColorAt(1, white(0));
        QPainterPath ellipse;
        ellipse.addEllipse(centre, axes.width() / 2, axes.height() / 2);
        painter.fillPath(ellipse, light);
    }

    QRectF innerSquare() const { return {-r + 0.5, -r + 0.5, 2 * r - 1, 2 * r - 1}; }

    void paintRim(QPainter &painter) const
    {
        // From -27 degrees through the bottom and the left to 63; the painter counts angles the
        // other way round where the y axis points up.
        QPainterPath arc;
        arc.arcMoveTo(innerSquare(), 27);
        arc.arcTo(innerSquare(), 27, 270);
        QPen pen(white(0.2), 1);
        pen.setCapStyle(Qt::FlatCap);
        painter.strokePath(arc, pen);
    }

    void paintOutline(QPainter &painter) const
    {
        painter.setPen(QPen(QColor::fromRgbF(0.55F, 0.55F, 0.58F, 0.45F), 0.75));
        painter.drawEllipse(innerSquare());
    }

    const double r;
    const QColor m_color;
    const bool m_isPale;
    QPainterPath m_circle;
};

} // namespace

QColor pearlColor(bool gatewayOnline, bool voiceRunning, const QString &voiceState)
{
    if (!gatewayOnline) {
        return QColor(0x98, 0x98, 0x9D, 0x80); // the system grey
    }
    if (!voiceRunning) {
        return Qt::white;
    }
    if (voiceState == "dormant"_L1) {
        return QColor::fromRgbF(0.0F, 0.75F, 0.75F);
    }
    if (voiceState == "listening"_L1 || voiceState == "capturing"_L1) {
        return QColor::fromRgbF(0.2F, 0.9F, 0.4F);
    }
    if (voiceState == "processing"_L1) {
        return QColor::fromRgbF(1.0F, 0.6F, 0.2F);
    }
    if (voiceState == "speaking"_L1) {
        return QColor::fromRgbF(1.0F, 0.3F, 0.3F);
    }
    return Qt::white;
}

QImage renderPearl(const QColor &color, QSizeF size, qreal devicePixelRatio)
{
    const QSize pixels = (size * devicePixelRatio).toSize();
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return {};
    }
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.translate(size.width() / 2, size.height() / 2);
    painter.scale(1, -1);
    Pearl(color, std::min(size.width(), size.height()) / 2 * 0.82).paint(painter);
    return image;
}

} // namespace ostrelle
