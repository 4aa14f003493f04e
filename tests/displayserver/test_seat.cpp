#include "displayserver/WaylandSeat.h"

#include <QSignalSpy>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTest>

#include <wayland-server.h>

using namespace ostrelle;
using namespace std::chrono_literals;

class TestSeat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comesAndGoes()
    {
        const QTemporaryDir runtime;
        qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
        wl_display *const compositor = wl_display_create();
        qputenv("WAYLAND_DISPLAY", wl_display_add_socket_auto(compositor));
        QTimer turns;
        connect(&turns, &QTimer::timeout, this, [&] {
            wl_event_loop_dispatch(wl_display_get_event_loop(compositor), 0);
            wl_display_flush_clients(compositor);
        });
        turns.start(5ms);

        auto seat = WaylandSeat::watch();
        QSignalSpy appeared(seat.get(), &WaylandSeat::appeared);
        const auto add = [&](const wl_interface &interface) {
            return wl_global_create(compositor, &interface, 1, nullptr, nullptr);
        };
        add(wl_shm_interface);
        QVERIFY(!appeared.wait(200));
        wl_global *const global = add(wl_seat_interface);
        QVERIFY(appeared.wait());
        QVERIFY(seat->isPresent());
        wl_global *const another = add(wl_seat_interface);
        wl_global_destroy(global);
        QVERIFY(!QTest::qWaitFor([&] { return !seat->isPresent(); }, 200));
        QCOMPARE(appeared.size(), 1);
        wl_global_destroy(another);
        QTRY_VERIFY(!seat->isPresent());
        turns.stop();
        wl_display_destroy_clients(compositor);
        wl_display_destroy(compositor); // and the watcher outlives it
        QTRY_VERIFY(!seat->findChild<QSocketNotifier *>()->isEnabled());
    }
};

QTEST_GUILESS_MAIN(TestSeat)
#include "test_seat.moc"
