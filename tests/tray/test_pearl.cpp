#include "support/Rows.h"
#include "tray/Pearl.h"
#include "tray/PearlIcon.h"

#include <QPainter>
#include <QTest>

#include <algorithm>
#include <array>
#include <cstdlib>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

constexpr double points = 18;
constexpr int pixelsPerPoint = 10; // fine enough that a whole pixel lies within the thinnest stroke
constexpr double radius = points / 2 * 0.82;

// In radii from the centre, y upwards.
struct Spot {
    const char *name;
    double x;
    double y;
};

constexpr double rim = (radius - 0.5) / radius;
constexpr std::array spots{Spot{"centre", 0, 0},
                           Spot{"highlight below", -0.35, 0.01},
                           Spot{"highlight's edge", -0.6, 0.2},
                           Spot{"specular dot", -0.28, 0.38},
                           Spot{"reflection below", 0.1, -0.6},
                           Spot{"reflection on the left", -0.82, -0.1},
                           Spot{"reflection on the right", 0.75, 0.3},
                           Spot{"upper edge of the body", 0.5, 0.75},
                           Spot{"before the rim", rim * 0.921, rim * -0.389},
                           Spot{"the rim's beginning", rim * 0.853, rim * -0.523},
                           Spot{"rim at the bottom", 0, -rim},
                           Spot{"the rim's end", rim * 0.381, rim * 0.925},
                           Spot{"behind the rim", rim * 0.523, rim * 0.852}};

QPoint pixelAt(double x, double y)
{
    const double middle = points / 2;
    return {static_cast<int>((middle + x * radius) * pixelsPerPoint),
            static_cast<int>((middle - y * radius) * pixelsPerPoint)};
}

const QColor offline = QColor::fromRgbF(0.596F, 0.596F, 0.616F, 0.5F);
const QColor speaking = QColor::fromRgbF(1, 0.3F, 0.3F);

} // namespace

class TestPearl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasTheColourOfTheState()
    {
        const auto online = [](const QString &word) { return pearlColor(true, true, word).rgba(); };
        QCOMPARE(online(u"dormant"_s), QColor::fromRgbF(0, 0.75F, 0.75F).rgba());
        QCOMPARE(online(u"capturing"_s), QColor::fromRgbF(0.2F, 0.9F, 0.4F).rgba());
        QCOMPARE(online(u"processing"_s), QColor::fromRgbF(1, 0.6F, 0.2F).rgba());
        QCOMPARE(online(u"speaking"_s), speaking.rgba());
        QCOMPARE(online(u"Speaking"_s), qRgb(255, 255, 255));
        QCOMPARE(pearlColor(true, false, u"speaking"_s).rgba(), qRgb(255, 255, 255));
        QCOMPARE(pearlColor(false, true, u"speaking"_s).rgba(), offline.rgba());
    }

    void isLitLikeASphere_data()
    {
        // The light is that of each spot, as it was when it looked right.
        const Rows<QColor, QList<int>> row("color", "light");
        row("translucent", offline,
            {0xb2b2b6, 0xcacacd, 0xb3b3b7, 0xfbfbfb, 0x8d8d90, 0x808083, 0x7b7b7e, 0x7f7f82,
             0x666669, 0x868689, 0x8f8f91, 0x98989a, 0x7c7c7f});
        row("pale", Qt::white,
            {0xe4e4e4, 0xededed, 0xe7e7e7, 0xffffff, 0xcdcdcd, 0xb2b2b2, 0xa7a7a7, 0x9c9ca0,
             0x8b8b8f, 0x9b9b9f, 0x9e9ea2, 0xa3a3a7, 0x98989c});
    }

    void isLitLikeASphere()
    {
        QFETCH(QColor, color);
        QFETCH(QList<int>, light);
        const QImage image = renderPearl(color, {points, points}, pixelsPerPoint);
        for (std::size_t i = 0; i < spots.size(); ++i) {
            const QRgb seen = image.pixel(pixelAt(spots[i].x, spots[i].y));
            const auto expected = static_cast<QRgb>(light[static_cast<qsizetype>(i)]);
            const int difference = std::max({std::abs(qRed(seen) - qRed(expected)),
                                             std::abs(qGreen(seen) - qGreen(expected)),
                                             std::abs(qBlue(seen) - qBlue(expected))});
            QVERIFY2(difference < 4 && qAlpha(seen) == 255,
                     qPrintable(QLatin1StringView(spots[i].name) + u": "_s + QColor(seen).name()));
        }
        QCOMPARE(image.pixelColor(pixelAt(0.75, 0.75)).alpha(), 0); // outside
        QVERIFY(qAlpha(image.pixel(163, 90)) < 255);                // its edge is smooth
    }

    void staysRoundInANarrowTray()
    {
        QImage tray(20, 40, QImage::Format_ARGB32_Premultiplied);
        tray.fill(Qt::transparent);
        QPainter painter(&tray);
        pearlIcon(Qt::red).paint(&painter, tray.rect());
        painter.end();
        QCOMPARE(qAlpha(tray.pixel(10, 20)), 255);
        QCOMPARE(qAlpha(tray.pixel(10, 8)), 0);
    }
};

QTEST_MAIN(TestPearl)
#include "test_pearl.moc"
