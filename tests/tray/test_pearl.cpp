#include "tray/Pearl.h"
#include "tray/PearlIcon.h"

#include <QGuiApplication>
#include <QPainter>
#include <QTest>

#include <array>
#include <cmath>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

constexpr double points = 18;
constexpr int pixelsPerPoint = 10; // fine enough that a whole pixel lies within the thinnest stroke
constexpr double r = points / 2 * 0.82;

using Rgb = std::array<double, 3>;

// A point of the pearl, in radii from its centre, y upwards; the light on it is worked out here
// from the sphere's recipe, layer by layer.
class Reference
{
public:
    Reference(const QColor &color, double x, double y)
        : m_color{color.redF(), color.greenF(), color.blueF()}
        , m_x(x)
        , m_y(y)
        , m_isPale(0.299 * m_color[0] + 0.587 * m_color[1] + 0.114 * m_color[2] > 0.75)
    {
    }

    Rgb light() const
    {
        const double a = m_isPale ? 0.3 : 0.15;
        Rgb light = body();
        mix(light, {1, 1, 1}, sheen());
        mix(light, scaled(0.65), within(0, -0.5, 0.9, 0.6) ? a : 0);
        mix(light, shade(), within(-0.8, 0.2, 0.25, 0.7) ? 0.6 * a : 0);
        mix(light, shade(), within(0.8, 0.2, 0.25, 0.6) ? 0.5 * a : 0);
        mix(light, {1, 1, 1}, within(-0.35, 0.2, 0.35, 0.225) ? fade(-0.35, 0.2, 0.35, 0.75) : 0);
        mix(light, {1, 1, 1}, within(-0.28, 0.38, 0.12, 0.12) ? fade(-0.28, 0.38, 0.12, 0.95) : 0);
        mix(light, {1, 1, 1}, isOnStroke(1) && isOnArc() ? 0.2 : 0);
        mix(light, {0.55, 0.55, 0.58}, m_isPale && isOnStroke(0.75) ? 0.45 : 0);
        return light;
    }

private:
    // Along the ray from the focus through the point, the share of the way to the outer circle.
    Rgb body() const
    {
        const double fx = -0.2;
        const double fy = 0.25;
        const double dx = m_x - fx;
        const double dy = m_y - fy;
        const double a = dx * dx + dy * dy;
        const double b = fx * dx + fy * dy;
        const double c = fx * fx + fy * fy - 1.1 * 1.1;
        const double t = a > 0 ? a / (-b + std::sqrt(b * b - a * c)) : 0;
        const Rgb tint = scaled(1.1, 0.15);
        Rgb light = t < 0.55 ? tint : m_color;
        mix(light, t < 0.55 ? m_color : shade(), t < 0.55 ? t / 0.55 : (t - 0.55) / 0.45);
        return light;
    }

    double sheen() const
    {
        const double t = ((m_x + 1) * 2 + (m_y - 0.3) * -0.6) / (4 + 0.36);
        return 0.12 * (1 - std::abs(t - 0.5) * 2);
    }

    double fade(double cx, double cy, double radius, double opacity) const
    {
        return opacity * (1 - std::hypot(m_x - cx, m_y - cy) / radius);
    }

    bool within(double cx, double cy, double halfWidth, double halfHeight) const
    {
        return std::hypot((m_x - cx) / halfWidth, (m_y - cy) / halfHeight) < 1;
    }

    bool isOnStroke(double width) const
    {
        return std::abs(std::hypot(m_x, m_y) * r - (r - 0.5)) < width / 2;
    }

    bool isOnArc() const
    {
        const double angle = std::atan2(m_y, m_x);
        return angle < -0.47124 || angle > 1.09956;
    }

    Rgb scaled(double factor, double addend = 0) const
    {
        Rgb light = m_color;
        for (double &channel : light) {
            channel = std::min(1.0, channel * factor + addend);
        }
        return light;
    }

    Rgb shade() const { return scaled(m_isPale ? 0.35 : 0.55); }

    static void mix(Rgb &light, const Rgb &other, double opacity)
    {
        for (std::size_t i = 0; i < 3; ++i) {
            light[i] += (other[i] - light[i]) * opacity;
        }
    }

    const Rgb m_color;
    const double m_x;
    const double m_y;
    const bool m_isPale;
};

struct Spot {
    const char *name;
    double x;
    double y;
};

constexpr double rim = (r - 0.5) / r;
constexpr std::array spots{Spot{"centre", 0, 0},
                           Spot{"highlight", -0.35, 0.2},
                           Spot{"highlight's edge", -0.6, 0.2},
                           Spot{"specular dot", -0.28, 0.38},
                           Spot{"reflection below", 0.1, -0.6},
                           Spot{"reflection on the left", -0.75, -0.1},
                           Spot{"reflection on the right", 0.75, 0.3},
                           Spot{"upper edge of the body", 0.5, 0.75},
                           Spot{"rim on the left", -rim, 0},
                           Spot{"rim at the bottom", 0, -rim},
                           Spot{"no rim on the right", rim * 0.94, rim * 0.342}};

QPoint pixelAt(double x, double y)
{
    const double middle = points / 2;
    return {static_cast<int>((middle + x * r) * pixelsPerPoint),
            static_cast<int>((middle - y * r) * pixelsPerPoint)};
}

// The light in the middle of that pixel.
Rgb expectedLight(const QColor &color, QPoint pixel)
{
    const auto radii = [](int place) { return ((place + 0.5) / pixelsPerPoint - points / 2) / r; };
    return Reference(color, radii(pixel.x()), -radii(pixel.y())).light();
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
        QCOMPARE(online(u"listening"_s), QColor::fromRgbF(0.2F, 0.9F, 0.4F).rgba());
        QCOMPARE(online(u"capturing"_s), QColor::fromRgbF(0.2F, 0.9F, 0.4F).rgba());
        QCOMPARE(online(u"processing"_s), QColor::fromRgbF(1, 0.6F, 0.2F).rgba());
        QCOMPARE(online(u"speaking"_s), speaking.rgba());
        QCOMPARE(online(u"Speaking"_s), qRgb(255, 255, 255));
        QCOMPARE(pearlColor(true, false, u"speaking"_s).rgba(), qRgb(255, 255, 255));
        QCOMPARE(pearlColor(false, true, u"speaking"_s).rgba(), offline.rgba());
    }

    void isLitLikeASphere_data()
    {
        QTest::addColumn<QColor>("color");
        QTest::newRow("translucent") << offline;
        QTest::newRow("pale") << QColor(Qt::white);
        QTest::newRow("saturated") << speaking;
    }

    void isLitLikeASphere()
    {
        QFETCH(QColor, color);
        const QImage image = renderPearl(color, {points, points}, pixelsPerPoint);
        for (const Spot &spot : spots) {
            const QPoint pixel = pixelAt(spot.x, spot.y);
            const QColor seen = image.pixelColor(pixel);
            const Rgb expected = expectedLight(color, pixel);
            const Rgb actual{seen.redF(), seen.greenF(), seen.blueF()};
            for (std::size_t i = 0; i < 3; ++i) {
                QVERIFY2(std::abs(actual[i] - expected[i]) < 0.02,
                         qPrintable(
                             u"%1, channel %2: %3 instead of %4"_s.arg(QLatin1StringView(spot.name))
                                 .arg(i)
                                 .arg(actual[i])
                                 .arg(expected[i])));
            }
            QCOMPARE(seen.alpha(), 255);
        }
        QCOMPARE(image.pixelColor(pixelAt(0.75, 0.75)).alpha(), 0); // outside
    }

    void isNothingWithoutASize() { QVERIFY(renderPearl(Qt::white, {0, 18}).isNull()); }

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

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    TestPearl test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_pearl.moc"
