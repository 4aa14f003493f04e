#include "tray/PanelPlacement.h"

#include <QTest>

using namespace ostrelle;

class TestTray : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void placesThePanel_data()
    {
        QTest::addColumn<QRect>("icon");
        QTest::addColumn<QRect>("available");
        QTest::addColumn<QRect>("panel");
        const QRect besideTop(0, 30, 1000, 770);
        QTest::newRow("bar at the top")
            << QRect(500, 15, 20, 20) << besideTop << QRect(409, 39, 200, 300);
        QTest::newRow("bar at the bottom")
            << QRect(500, 775, 20, 20) << QRect(0, 0, 1000, 770) << QRect(409, 470, 200, 300);
        QTest::newRow("bar on the left")
            << QRect(5, 400, 20, 20) << QRect(30, 0, 970, 800) << QRect(30, 259, 200, 300);
        QTest::newRow("bar on the right")
            << QRect(975, 400, 20, 20) << QRect(0, 0, 970, 800) << QRect(770, 259, 200, 300);
        QTest::newRow("bar that takes no room")
            << QRect(500, 775, 20, 20) << QRect(0, 0, 1000, 800) << QRect(409, 471, 200, 300);
        QTest::newRow("in the corner")
            << QRect(975, 5, 20, 20) << besideTop << QRect(800, 30, 200, 300);
        QTest::newRow("on a screen that is too small")
            << QRect(100, 5, 20, 20) << QRect(0, 30, 150, 170) << QRect(0, 30, 150, 170);
        QTest::newRow("under a pointer on a bar")
            << QRect(500, 785, 1, 1) << QRect(0, 0, 1000, 770) << QRect(400, 470, 200, 300);
        QTest::newRow("under a pointer on a bar that hides")
            << QRect(500, 10, 1, 1) << QRect(0, 0, 1000, 800) << QRect(400, 39, 200, 300);
        QTest::newRow("under a pointer in a corner of bars that hide")
            << QRect(990, 10, 1, 1) << QRect(0, 0, 1000, 800) << QRect(800, 39, 200, 300);
        QTest::newRow("of an icon that nobody finds, below a bar")
            << QRect() << besideTop << QRect(796, 34, 200, 300);
    }

    void placesThePanel()
    {
        QFETCH(QRect, icon);
        QFETCH(QRect, available);
        const ScreenPlace screen{.whole = QRect(0, 0, 1000, 800), .available = available};
        const bool isPointer = icon.size() == QSize(1, 1);
        QTEST(placePanel(isPointer ? iconUnder(icon.topLeft(), screen) : icon, screen, {200, 300}),
              "panel");
    }
};

QTEST_GUILESS_MAIN(TestTray)
#include "test_icon.moc"
