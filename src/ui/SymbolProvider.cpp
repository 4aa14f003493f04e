#include "ui/SymbolProvider.h"

#include <QPainter>
#include <QSvgRenderer>

namespace ostrelle
{

using namespace Qt::StringLiterals;

QImage SymbolProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    const QString symbol = id.section(u'/', 0, 0);
    const QColor color(u'#' + id.section(u'/', 1, 1));
    QSvgRenderer drawing(u":/qt/qml/Ostrelle/symbols/"_s + symbol + u".svg"_s);
    if (!drawing.isValid()) {
        return {};
    }
    QImage image(requestedSize.isEmpty() ? drawing.defaultSize() : requestedSize,
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawing.setAspectRatioMode(Qt::KeepAspectRatio);
    drawing.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    *size = image.size();
    return image;
}

} // namespace ostrelle
