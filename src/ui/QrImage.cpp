#include "ui/QrImage.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ostrelle
{

namespace
{

// One pixel a module, quiet zone included.
QImage drawn(const QrCode &code)
{
    const int side = code.size() + 2 * QrCode::quietZone;
    QImage image(side, side, QImage::Format_Grayscale8);
    image.fill(Qt::white);
    for (int row = 0; row < code.size(); ++row) {
        uchar *line = image.scanLine(row + QrCode::quietZone) + QrCode::quietZone;
        for (int column = 0; column < code.size(); ++column) {
            line[column] = code.isDark(column, row) ? 0x00 : 0xff;
        }
    }
    return image;
}

} // namespace

QrImage::QrImage(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
}

void QrImage::setCode(const QrCode &code)
{
    if (m_code != code) {
        m_code = code;
        update();
        Q_EMIT codeChanged();
    }
}

void QrImage::paint(QPainter *painter)
{
    if (m_code.isEmpty()) {
        return;
    }
    const QImage image = drawn(m_code);
    const double pixelsPerUnit = painter->deviceTransform().m11();
    const QSizeF place = size() * pixelsPerUnit;
    const double module =
        std::max(1.0, std::floor(std::min(place.width(), place.height()) / image.width()));
    const double side = module * image.width();
    const QPointF corner(std::floor((place.width() - side) / 2),
                         std::floor((place.height() - side) / 2));
    painter->setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter->drawImage(QRectF(corner / pixelsPerUnit, QSizeF(side, side) / pixelsPerUnit), image);
}

} // namespace ostrelle

#include "moc_QrImage.cpp"
