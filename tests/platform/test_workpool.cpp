#include "platform/WorkPool.h"

#include <QSemaphore>
#include <QTest>

#include <atomic>
#include <stdexcept>
#include <vector>

using namespace ostrelle;
using namespace std::chrono_literals;

class TestWorkPool : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneThreadKeepsTheOrder()
    {
        WorkPool pool;
        std::vector<int> done;
        std::vector<int> given;
        for (int i = 0; i < 1000; ++i) {
            given.push_back(i);
            pool.start([&done, i] { done.push_back(i); });
        }
        pool.waitForDone();
        QCOMPARE(done, given);
    }

    void runsAsManyAtOnceAsItMay()
    {
        WorkPool pool(3);
        QSemaphore begun;
        QSemaphore end;
        std::atomic running = 0;
        std::atomic most = 0;
        for (int i = 0; i < 5; ++i) {
            pool.start([&] {
                most = std::max<int>(most, ++running);
                begun.release();
                end.acquire();
                --running;
            });
        }
        QVERIFY(begun.tryAcquire(3, 10'000));
        QVERIFY(!pool.waitForDone(1ms));
        end.release(5);
        QVERIFY(pool.waitForDone(10s));
        QCOMPARE(begun.available() * 10 + most, 23);
    }

    void tellsWhatBecameOfIt()
    {
        WorkPool pool;
        QCOMPARE(pool.run([] { return 7; }).result(), 7);
        auto failed = pool.run([]() -> int { throw std::runtime_error("no"); });
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, failed.result());
        pool.hold();
        bool hasRun = false;
        auto dropped = pool.run([&hasRun] { hasRun = true; });
        pool.clear();
        auto last = pool.run([] {});
        pool.release();
        last.waitForFinished();
        QVERIFY(dropped.isCanceled() && dropped.isFinished() && !hasRun && !last.isCanceled());
    }
};

QTEST_GUILESS_MAIN(TestWorkPool)
#include "test_workpool.moc"
