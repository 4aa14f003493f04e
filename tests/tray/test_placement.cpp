#include "support/Rows.h"
#include "tray/PanelPlacement.h"

#include <QTest>

using namespace ostrelle;

class TestPlacement : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void placesThePanel_data()
    {
        const Rows<QRect, QRect, QRect> row("icon", "available", "panel");
        const QRect all(0, 0, 1000, 800);
        const QRect besideTop(0, 30, 1000, 770);
        row("bar at the top", {500, 15, 20, 20}, besideTop, {409, 39, 200, 300});
        row("bar at the bottom", {500, 775, 20, 20}, {0, 0, 1000, 770}, {409, 470, 200, 300});
        row("bar on the left", {10, 10, 20, 20}, {30, 0, 970, 800}, {34, 0, 200, 300});
        row("bar on the right", {975, 400, 20, 20}, {0, 0, 970, 800}, {770, 259, 200, 300});
        row("bar that takes no room", {999, 775, 20, 20}, all, {800, 471, 200, 300});
        row("screen that is too small", {100, 5, 20, 20}, {0, 30, 150, 170}, {0, 30, 150, 170});
        row("pointer on a bar", {500, 29, 1, 1}, besideTop, {400, 34, 200, 300});
        row("pointer on a bar that hides", {990, 10, 1, 1}, all, {800, 39, 200, 300});
        row("an icon that nobody finds, below a bar", {}, besideTop, {796, 34, 200, 300});
        row("an icon that nobody finds, above a bar", {}, {0, 0, 1000, 770}, {796, 466, 200, 300});
        row("an icon that nobody finds, no bars", {}, all, {796, 4, 200, 300});
    }

    void placesThePanel()
    {
        QFETCH(QRect, icon);
        QFETCH(QRect, available);
        const ScreenPlace screen{.whole = QRect(0, 0, 1000, 800), .available = available};
        const bool isPointer = icon.size() == QSize(1, 1);
        QTEST(placePanel(isPointer ? iconUnder(icon.topLeft(), screen) : icon, screen, {200, 300}),
              "panel");
        QVERIFY(isAtEdge(icon.center(), screen));
        QVERIFY(!isAtEdge(available.center(), screen));
    }
};

QTEST_APPLESS_MAIN(TestPlacement)
#include "test_placement.moc"
