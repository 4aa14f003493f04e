#include "core/BackgroundWork.h"
#include "platform/AbandonableThread.h"
#include "platform/ProcessSetup.h"
#include "statusserver/FileVersion.h"
#include "statusserver/ServerFixture.h"
#include "support/Patience.h"
#include "support/Processes.h"
#include "support/Rows.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <ctime>
#include <fcntl.h>
#include <list>
#include <sys/resource.h>
#include <unistd.h>

using namespace ostrelle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

const std::optional nothing = QByteArray("");

qint64 memoryInUse()
{
    QFile statistics(u"/proc/self/statm"_s);
    static_cast<void>(statistics.open(QIODevice::ReadOnly));
    return statistics.readAll().split(' ').value(1).toLongLong() * ::sysconf(_SC_PAGESIZE);
}

// Leaves room for one more descriptor while it lives.
class LastDescriptor
{
public:
    LastDescriptor()
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit limit{.rlim_cur = 128, .rlim_max = m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &limit);
        do {
            m_taken.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        } while (m_taken.back());
        m_taken.resize(m_taken.size() - 2); // the failed one, and one to spare
    }
    ~LastDescriptor() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    LastDescriptor(const LastDescriptor &) = delete;
    LastDescriptor &operator=(const LastDescriptor &) = delete;

private:
    std::vector<Descriptor> m_taken;
    rlimit m_before{};
};

} // namespace

class TestHostileClients : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { prepareProcess(); }

    void silentClientIsDropped()
    {
        const ServerFixture fixture({.untilRequest = 50ms});
        RawClient first(fixture.server->port());
        QCOMPARE(first.readAll(), nothing);
        // The clock was not left running or stopped for good, and nobody is busy with it.
        const std::clock_t begin = std::clock();
        const RawClient second(fixture.server->port());
        QCOMPARE(fixture.get("/health"), healthy);
        RawClient third(fixture.server->port()); // whose time is up later
        QCOMPARE(third.readAll(), nothing);
        QVERIFY(std::clock() - begin < CLOCKS_PER_SEC / 50);
    }

    void slowReader_data()
    {
        const Rows<std::size_t, bool> row("slowestReading", "arrives");
        row("makes progress", std::size_t{4096}, true);
        row("drop by drop", std::size_t{200'000'000}, false);
    }

    void slowReader()
    {
        QFETCH(const std::size_t, slowestReading);
        constexpr qsizetype bytes = 30'000'000;
        const ServerFixture fixture({.untilReading = 600ms, .slowestReading = slowestReading});
        fixture.home.write(agentTrackerFile, QByteArray(bytes, 'x'));
        RawClient client(fixture.server->port());
        QVERIFY(client.send("GET /status HTTP/1.1\r\n\r\n"));
        qsizetype total = 0;
        // The whole answer takes over a second, and no pause between two reads is a long one.
        for (QByteArray drop = client.read(131'072); !drop.isEmpty(); drop = client.read(131'072)) {
            total += drop.size();
            QTest::qWait(5);
        }
        QTEST(total > bytes, "arrives");
    }

    // One answer for all of them; then two others, for the second of which the first has to go.
    void unreadAnswersFillNoMemory()
    {
        constexpr qsizetype bytes = 20'000'000;
        const ServerFixture fixture({.maxAnswerBytes = 50'000'000});
        std::list<RawClient> crowd;
        const auto ask = [&](int clients) {
            QFile file(fixture.home.path(agentTrackerFile));
            QVERIFY(file.open(QFile::ReadOnly));
            QTRY_VERIFY(settledVersion(file.handle())); // else each client has one of its own
            for (int i = 0; i < clients; ++i) {
                // With less room the kernel drops what does not fit, and waits longer and longer.
                crowd.emplace_back(fixture.server->port(), 65536)
                    .send("GET /status HTTP/1.1\r\n\r\n");
                QVERIFY(!crowd.back().read(1).isEmpty());
            }
        };
        fixture.home.write(agentTrackerFile, QByteArray(bytes, 'x'));
        const qint64 before = memoryInUse();
        ask(40);
        QVERIFY(memoryInUse() - before < 8 * bytes); // a sanitizer takes some of it
        // In pieces: what the test itself has had in memory would count too.
        const auto countRead = [](RawClient &client) {
            qsizetype count = 0;
            for (QByteArray piece; !(piece = client.read(65536)).isEmpty();) {
                count += piece.size();
            }
            return count;
        };
        RawClient &lastOfCrowd = crowd.back();
        fixture.home.write(agentTrackerFile, QByteArray(bytes, 'y'));
        ask(1);
        QVERIFY(countRead(lastOfCrowd) > bytes - 1000);
        fixture.home.write(agentTrackerFile, QByteArray(bytes, 'z'));
        ask(1);
        QVERIFY(countRead(crowd.front()) < bytes);
        QVERIFY(countRead(*std::next(crowd.rbegin())) > bytes - 1000);
        QVERIFY(countRead(crowd.back()) > bytes - 1000);
        crowd.clear();
        QTRY_VERIFY_WITH_TIMEOUT(memoryInUse() - before < bytes / 2, patienceMilliseconds);
    }

    void clientsThatCloseHalfway()
    {
        const ServerFixture fixture;
        fixture.home.write(agentTrackerFile, QByteArray(5'000'000, 'x'));
        utilityPool().waitForDone(); // whose tasks open files
        const qsizetype before = openDescriptors();
        for (int i = 0; i < 20; ++i) {
            RawClient gone(fixture.server->port());
            RawClient unread(fixture.server->port());
            unread.send("GET /status HTTP/1.1\r\n\r\n");
            RawClient halfClosed(fixture.server->port());
            halfClosed.send("GET /health HTTP/1.1\r\n\r\n");
            halfClosed.finishSending();
            QCOMPARE(halfClosed.readAll().value_or("broken"), healthy);
            RawClient mute(fixture.server->port());
            mute.finishSending();
            QCOMPARE(mute.readAll(), nothing);
        }
        QTRY_COMPARE(openDescriptors(), before);
    }

    void crowdLeavesDescriptors_data()
    {
        const Rows<QByteArray> row("request");
        row("silent", QByteArray());
        row("does not read", "GET /status HTTP/1.1\r\n\r\n");
    }

    void crowdLeavesDescriptors()
    {
        QFETCH(const QByteArray, request);
        constexpr qsizetype bytes = 5'000'000;
        const ServerFixture fixture({.untilRequest = 60s, .maxDescriptors = 300});
        fixture.home.write(agentTrackerFile, QByteArray(bytes, 'x'));
        utilityPool().waitForDone();
        std::list<RawClient> crowd;
        for (int i = 0; i < 400; ++i) {
            QVERIFY(crowd.emplace_back(fixture.server->port()).send(request));
        }
        QCOMPARE(fixture.get("/health"), healthy);
        // The first have made way, by a reset where nobody has read what they asked for; whoever is
        // there and speaks after all is answered.
        const QByteArray whole(request.isEmpty() ? bytes : 0, 'x');
        QVERIFY(crowd.front().readAll().value_or(whole).size() < bytes);
        if (request.isEmpty()) {
            QVERIFY(crowd.back().send("GET /health HTTP/1.1\r\n\r\n"));
            QCOMPARE(crowd.back().readAll().value_or("broken"), healthy);
        }
        QVERIFY(openDescriptors() < 400 + 350); // some are open for a moment only
    }

    // A log of a terabyte, without a block on the disk, keeps the only reader busy.
    void waitingHistoryRequestsAreBounded()
    {
        const ServerFixture fixture({.historyThreads = 1, .maxHistoryRequests = 2});
        fixture.writeSession("");
        QVERIFY(QFile::resize(fixture.home.path(u".duskrell/agents/main/sessions/a.jsonl"_s),
                              qint64{1} << 40));
        std::list<RawClient> crowd;
        for (int i = 0; i < 3; ++i) {
            QVERIFY(
                crowd.emplace_back(fixture.server->port()).send("GET /history HTTP/1.1\r\n\r\n"));
        }
        QCOMPARE(crowd.back().readAll(), nothing);
        QCOMPARE(fixture.get("/health"), healthy);
    }

    void requestInPiecesIsNotReset()
    {
        const ServerFixture fixture({.untilRequest = 60s});
        RawClient client(fixture.server->port());
        QVERIFY(client.send("GET /health HTTP/1.1\r\n"));
        QCOMPARE(client.readAll().value_or("broken"), healthy);
        // The answer to the first line; the rest of the request comes behind it.
        QVERIFY(client.send("Host: localhost\r\n"));
        QVERIFY(client.send("\r\n")); // fails when the piece before it caused a reset
    }

    void endlessRequestEnds()
    {
        const ServerFixture fixture({.untilRequest = 200ms});
        RawClient client(fixture.server->port());
        QVERIFY(client.send(QByteArray("GET /health").leftJustified(4097))); // a byte is left
        QCOMPARE(client.readAll().value_or("broken"), healthy);
        const QByteArray more(65536, 'x');
        int sends = 0;
        QTRY_VERIFY((++sends, !client.send(more)));
        QVERIFY(sends > 16); // so often what comes is thrown away
    }

    void noDescriptorsLeft()
    {
        const ServerFixture fixture({.untilRequest = 60s});
        QCOMPARE(fixture.get("/health"), healthy);
        utilityPool().waitForDone();
        const PrintedLines printed;
        QVERIFY(printed.text().isEmpty()); // a sanitizer's first look needs a descriptor
        std::optional<LastDescriptor> limit(std::in_place); // the client's own end
        RawClient late(fixture.server->port());
        QVERIFY(late.send("GET /health HTTP/1.1\r\n\r\n"));
        // As long as nobody is silent, nobody can be dropped for it.
        const QByteArray complaint = "[StatusServer] Accept error: Too many open files\n";
        QTRY_COMPARE(printed.text(), complaint);
        // It is told once, however often it fails, and nobody is busy with it.
        const std::clock_t begin = std::clock();
        QVERIFY(!QTest::qWaitFor([&] { return printed.text() != complaint; }, 120));
        QVERIFY(std::clock() - begin < CLOCKS_PER_SEC / 20);
        limit.reset();
        QCOMPARE(late.readAll().value_or("broken"), healthy);
        RawClient silent(fixture.server->port());
        QCOMPARE(fixture.get("/health"), healthy);
        limit.emplace();
        RawClient later(fixture.server->port());
        QCOMPARE(silent.readAll(), nothing); // has made way; all were accepted in between
        QVERIFY(!QTest::qWaitFor([&] { return printed.text() != complaint + complaint; }, 50));
        QVERIFY(later.send("GET /health HTTP/1.1\r\n\r\n"));
        QCOMPARE(later.readAll().value_or("broken"), healthy); // for whom nobody else has to go
    }

    void endWhileServing()
    {
        const auto threads = [] { return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs).size(); };
        ServerFixture fixture({.historyThreads = 1});
        QVERIFY(!fixture.get("/history").isEmpty()); // which starts all that it ever needs
        const auto before = threads();
        fixture.home.write(agentTrackerFile, QByteArray(30'000'000, 'x'));
        fixture.writeSession("");
        // A log of a terabyte without a block on the disk.
        const QString log = fixture.home.path(u".duskrell/agents/main/sessions/a.jsonl"_s);
        QVERIFY(QFile::resize(log, qint64{1} << 40));
        RawClient digest(fixture.server->port());
        QVERIFY(digest.send("GET /history HTTP/1.1\r\n\r\n"));
        RawClient waiting(fixture.server->port());
        QVERIFY(waiting.send("GET /history HTTP/1.1\r\n\r\n"));
        RawClient unread(fixture.server->port());
        QVERIFY(unread.send("GET /status HTTP/1.1\r\n\r\n"));
        QVERIFY(!unread.read(1).isEmpty() && threads() <= before + 1); // who reads the document
        const RawClient silent(fixture.server->port());
        fixture.server.reset();
        QCOMPARE(digest.readAll(), nothing);
        QVERIFY(unread.readAll());
        QTRY_VERIFY(threads() < before - 1);
    }

    void aThreadThatHangsIsLeftBehind()
    {
        const auto end = std::make_shared<std::promise<void>>();
        {
            AbandonableThread thread([end] { end->get_future().wait(); });
            thread.finishUntil(std::chrono::steady_clock::now() + 10ms);
        }
        end->set_value();
        QTRY_COMPARE(end.use_count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestHostileClients)

#include "test_hostileclients.moc"
