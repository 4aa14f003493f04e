#include "tray/PearlIcon.h"

#include "tray/Pearl.h"

#include <QHash>
#include <QIconEngine>
#include <QPainter>

#include <algorithm>

namespace ostrelle
{

namespace
{

// What trays ask for, in pixels, of plain and of doubled screens.
const QList<int> traySizes{16, 18, 22, 24, 32, 36, 44, 48, 64};

class PearlIconEngine final : public QIconEngine
{
public:
    explicit PearlIconEngine(const QColor &color)
        : m_color(color)
    {
    }

    void paint(QPainter *painter, const QRect &place, QIcon::Mode mode, QIcon::State state) override
    {
        const int side = std::min(place.width(), place.height()); // tray hosts give odd places
        QRect square(0, 0, side, side);
        square.moveCenter(place.center());
        const QSizeF pixels = QSizeF(square.size()) * painter->device()->devicePixelRatioF();
        painter->drawPixmap(square, pixmap(pixels.toSize(), mode, state));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        const int side = std::min(size.width(), size.height());
        QPixmap &drawn = m_drawn[side];
        if (drawn.isNull()) {
            drawn = QPixmap::fromImage(renderPearl(m_color, QSizeF(points, points), side / points));
            drawn.setDevicePixelRatio(1);
        }
        return drawn;
    }

    QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        QList<QSize> sizes;
        for (const int size : traySizes) {
            sizes.append({size, size});
        }
        return sizes;
    }

    QIconEngine *clone() const override { return new PearlIconEngine(m_color); }

private:
    static constexpr double points = 18; // for which the widths of the pearl's lines are made

    const QColor m_color;
    QHash<int, QPixmap> m_drawn; // by the side's length in pixels
};

} // namespace

QIcon pearlIcon(const QColor &color)
{
    return QIcon(new PearlIconEngine(color));
}

} // namespace ostrelle
