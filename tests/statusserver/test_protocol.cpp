#include "platform/ProcessSetup.h"
#include "statusserver/Listener.h"
#include "statusserver/ServedDocument.h"
#include "statusserver/ServerFixture.h"
#include "statusserver/ServerState.h"
#include "support/Rows.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <asio/io_context.hpp>
#include <chrono>
#include <deque>
#include <sys/stat.h>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr char emptyHistory[] = R"({"messages":[],"count":0})";

} // namespace

class TestProtocol : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { prepareProcess(); }

    void exactBytes_data()
    {
        const Rows<QByteArray, QByteArray> row("request", "answer");

        const QByteArray preflight = "HTTP/1.1 204 No Content\r\nAccess-Control-Allow-Origin: *\r\n"
                                     "Access-Control-Allow-Methods: GET, "
                                     "OPTIONS\r\nAccess-Control-Allow-Headers: Content-Type"
                                     "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
        const QByteArray agents = jsonAnswer("200 OK", R"({"agents":{},"completions":[]})");
        const QByteArray unknown = jsonAnswer("404 Not Found", R"({"error":"not found"})");
        row("preflight", "OPTIONS /any?thing HTTP/1.1\r\n\r\n", preflight);
        row("health", "GET /health HTTP/1.1\r\n\r\n", healthy);
        row("no empty line, no header", "GET /", agents);
        row("not HTTP at all", "\xff", agents);
        row("unknown path", "GET /favicon.ico HTTP/1.1\r\n\r\n", unknown);
        row("projects", "GET /projects HTTP/1.1\r\n\r\n",
            jsonAnswer("200 OK", R"({"version":1,"updated":"","projects":[]})"));
        row("history of nothing", "GET /?limit=3 HTTP/1.1\r\n\r\n",
            jsonAnswer("200 OK", emptyHistory));
        row("more than a receive", QByteArray("GET /health").leftJustified(4092) + "\r\n\r\nx",
            healthy);
        row("no target in one receive", QByteArray(300'000, ' ') + "GET /health", agents);
    }

    void exactBytes()
    {
        QFETCH(const QByteArray, request);
        const ServerFixture fixture;
        QTEST(fixture.ask(request), "answer");
    }

    void documentsAreServedAsStored()
    {
        const ServerFixture fixture;
        const QString file = u".ostrelle/ostrelle-cron-tracker.json"_s;
        const QString path = fixture.home.path(file);
        QElapsedTimer timer;
        // Nothing, NUL and characters of every length, and a large one.
        for (const QByteArray &content :
             {QByteArray(""), QByteArray("a\0\xC3\xB6\xE2\x80\xA6\xF0\x9F\xA6\xAA", 11),
              QByteArray("0123456789abcdef").repeated(200'000)}) {
            timer.start();
            fixture.home.write(file, content);
            QCOMPARE(fixture.get("/cron"), jsonAnswer("200 OK", content));
            QVERIFY(timer.elapsed() >= 40); // half of a document would be whole by now
        }
        // What the kernel makes up is said to be empty.
        QVERIFY(QFile::remove(path) && QFile::link(u"/proc/filesystems"_s, path));
        QCOMPARE(fixture.get("/cron"), jsonAnswer("200 OK", fixture.home.read(file)));
    }

    // Of the same length each time, in place and as another file, at once and after a while.
    void documentsAreServedAsTheyAreNow()
    {
        const ServerFixture fixture;
        const QString path = fixture.home.path(agentTrackerFile);
        for (int i = 10; i <= 60; ++i) {
            const bool inPlace = i % 2 == 0;
            fixture.home.write(inPlace ? agentTrackerFile : u"next"_s, QByteArray::number(i));
            QVERIFY(inPlace ||
                    ::rename(qPrintable(fixture.home.path(u"next"_s)), qPrintable(path)) == 0);
            QCOMPARE(bodyOf(fixture.get("/status")), QByteArray::number(i));
            QTest::qWait(i % 5 == 0 ? 60 : 0);
            QCOMPARE(bodyOf(fixture.get("/status")), QByteArray::number(i));
        }
        // What is at hand by now is looked at, but not opened.
        QVERIFY(QFile::remove(path) && ::mkfifo(qPrintable(path), 0600) == 0);
        QVERIFY(fixture.get("/status").startsWith("HTTP/1.1 404"));
    }

    void keepsAnUnchangedDocumentAtHand()
    {
        const ScratchHome home;
        asio::io_context loop;
        AnswerMemory memory;
        ServedDocument document(loop, home.path(u"document"_s).toStdString(), memory, 1min,
                                [](auto task) { task({}); });
        std::weak_ptr<const Response> read;
        const auto isAtHand = [&] {
            document.wait([&](SharedResponse answer) { read = answer; });
            return (loop.restart(), loop.run(), document.atHand() != nullptr);
        };
        // What has only just changed is taken at once, but may change again without being seen to.
        QTRY_VERIFY((home.write(u"document"_s, "{}"), !isAtHand()));
        QTRY_VERIFY_WITH_TIMEOUT(isAtHand(), 200);
        QVERIFY(QFile::remove(home.path(u"document"_s)) && !document.atHand());
        home.write(u"document"_s, QByteArray(1'060'000, ' ') + "1"); // more than is kept
        QVERIFY(!isAtHand() && read.expired());
    }

    // Whoever comes during a reading is answered by the next one.
    void readsOnceForAllWhoWait()
    {
        const ScratchHome home;
        asio::io_context loop;
        AnswerMemory memory;
        std::deque<Workers::Task> readings;
        ServedDocument document(loop, home.path(u"document"_s).toStdString(), memory, 1min,
                                [&](auto task) { readings.push_back(std::move(task)); });
        int answers = 0;
        const auto come = [&] { document.wait([&](const SharedResponse &) { ++answers; }); };
        come();
        come();
        come();
        for (const int answered : {1, 3}) {
            QVERIFY(readings.size() == 1);
            readings.front()({});
            readings.pop_front();
            loop.restart();
            loop.run();
            QCOMPARE(answers, answered);
        }
        QVERIFY(readings.empty() && !document.dropOldest());
        ServedDocument late(loop, {}, memory, -1min, [](auto) {});
        late.wait({});
        late.wait({}); // before whom the first one has waited for too long
        QVERIFY(late.dropOldest() && !late.dropOldest());
    }

    void whatIsNoDocument()
    {
        const ServerFixture fixture;
        const QString path = fixture.home.path(agentTrackerFile);
        const QByteArray refusal = jsonAnswer("404 Not Found", R"({"error":"file not found"})");
        fixture.home.write(agentTrackerFile, "{\"name\":\"z\xF6lf\"}"); // no UTF-8
        QCOMPARE(fixture.get("/status"), refusal);
        fixture.home.write(agentTrackerFile, "{}");
        QVERIFY(QFile::resize(path, qint64{1} << 40)); // without a block on the disk
        QCOMPARE(fixture.get("/status"), refusal);
        QVERIFY(QFile::remove(path));
        QCOMPARE(fixture.get("/status"), refusal);
        QVERIFY(QDir().mkdir(path));
        QCOMPARE(fixture.get("/status"), refusal);
        QVERIFY(QDir().rmdir(path) && QFile::link(u"/proc/self/mem"_s, path)); // cannot be read
        QCOMPARE(fixture.get("/status"), refusal);
    }

    void historyNeedsTheToken()
    {
        ServerFixture fixture;
        OstrelleConfig config = fixture.config();
        config.gateway.token = u"s3cret"_s;
        fixture.restart(config);

        const auto history = [&](const QByteArray &line) {
            return fixture.ask("GET /history HTTP/1.1\r\n" + line + "\r\n\r\n");
        };
        const QByteArray refusal = jsonAnswer("401 Unauthorized", R"({"error":"Unauthorized"})");
        const QByteArray empty = jsonAnswer("200 OK", emptyHistory);
        QCOMPARE(history("authorization: Bearer s3cret"), empty);
        QCOMPARE(history("Authorization: bearer s3cret"), refusal);
        QCOMPARE(history("Authorization: Bearer s3cre"), refusal);
        QCOMPARE(history("Authorization: Bearer s3creT"), refusal);
        QCOMPARE(history("Authorization: Bearer S3cret"), refusal);
        QCOMPARE(history("Accept: */*"), refusal);
        // Without any token, but one in the store that does not tell.
        fixture.restart(fixture.config());
        QCOMPARE(history("Accept: */*"), empty);
        QDir().mkpath(fixture.home.path(u".ostrelle/secrets.json"_s));
        QCOMPARE(history("Accept: */*"), refusal);
    }

    void cronHasAnOrdinaryPlace()
    {
        ServerFixture fixture;
        OstrelleConfig config = fixture.config();
        config.paths.cronFile.reset();
        fixture.restart(config);
        QCOMPARE(bodyOf(fixture.get("/cron")), R"({"version":1,"updated":"","jobs":[]})");
    }

    void historyOfTheNewestLog()
    {
        const ServerFixture fixture;
        fixture.writeSession(messageLine("one") + messageLine("two", "assistant") +
                             messageLine("HEARTBEAT_OK", "assistant"));
        QCOMPARE(
            bodyOf(fixture.get("/history?limit=1")),
            R"({"messages":[{"content":"two","role":"assistant","timestamp":"t"}],"count":1})");
    }

    void portInUse()
    {
        ServerFixture fixture;
        OstrelleConfig config = fixture.config();
        config.ports.status = fixture.server->port();
        const PrintedLines printed;
        StatusServer second(config, fixture.home.settings().tokens,
                            {.untilNextTry = std::chrono::milliseconds(20)});
        const QSignalSpy changes(&second, &StatusServer::portTakenChanged);
        second.start();
        QTRY_COMPARE(printed.text(), "[StatusServer] Failed to bind to port " +
                                         QByteArray::number(config.ports.status) +
                                         ": Address already in use\n");
        QTRY_VERIFY(second.portTaken() && !second.running());

        // An end without a clean-up in between: the same port serves again, without a further call,
        // although the system still remembers a connection.
        QCOMPARE(fixture.get("/health"), healthy);
        fixture.server->stop();
        QTRY_VERIFY(second.running() && !second.portTaken());
        QTRY_COMPARE(changes.count(), 2);
        QCOMPARE(printed.text().count('\n'), 2); // it is told once, however often it fails
    }

    void portOutOfRange()
    {
        const ScratchHome home;
        OstrelleConfig config = OstrelleConfig::defaults();
        for (const qint64 port : {qint64{65536}, (qint64{1} << 32) + 18794}) {
            config.ports.status = port;
            const PrintedLines printed;
            StatusServer server(config, home.settings().tokens);
            server.start();
            QTRY_COMPARE(printed.text(), "[StatusServer] Failed to bind to port " +
                                             QByteArray::number(port) + ": Invalid argument\n");
            QVERIFY(!server.running() && !server.startRequested() && !server.portTaken());
        }
    }

    void stopAndStartAgain()
    {
        ServerFixture fixture;
        QSignalSpy changes(fixture.server.get(), &StatusServer::runningChanged);
        fixture.server->stop();
        QVERIFY(!fixture.server->running() && fixture.server->port() == 0);
        QTRY_COMPARE(changes.count(), 1);
        fixture.server->stop();
        fixture.server->start();
        QVERIFY(fixture.server->startRequested() || fixture.server->running());
        QTRY_COMPARE(changes.count(), 2);
        fixture.server->start();
        QVERIFY(fixture.server->port() > 0 && !fixture.server->startRequested());

        // However they follow each other, the last call counts.
        for (int i = 0; i < 500; ++i) {
            fixture.server->stop();
            fixture.server->start();
        }
        QTRY_VERIFY(fixture.server->running() && !fixture.get("/health").isEmpty());
        fixture.server->stop();
        fixture.server->start();
        fixture.server->stop();
        QVERIFY(!QTest::qWaitFor([&] { return fixture.server->running(); }, 200));
    }

    // Whatever the thread is busy with that will close the socket.
    void refusesAtOnceWhenStopped()
    {
        ServerState state;
        const Listener listener = listenOn(65535).value();
        QVERIFY(state.enterServing(state.requestStart().value(), listener.socket.get(), 65535));
        QVERIFY(state.stop() == listener.socket.get() && !state.portTaken());
        QVERIFY(!RawClient(65535).isConnected());
        const int stopped = state.requestStart().value();
        QVERIFY(state.stop() == -1 && state.requestStart() && !state.enterServing(stopped, 0, 1));
    }

    void legacyAgentIsRetired()
    {
        const ScratchHome home;
        const QString plist = u"Library/LaunchAgents/com.duskrell.status-server.plist"_s;
        home.write(plist, "old");
        home.write(u".zshenv"_s, "launchctl() { echo $1 ${2##*/} >> ~/calls }");
        const StatusServer server(OstrelleConfig::defaults(), home.settings().tokens);
        QTRY_VERIFY(!home.exists(plist));
        QCOMPARE(home.read(plist + u".disabled"_s), "old");
        QCOMPARE(home.read(u"calls"_s), "bootout com.duskrell.status-server\n"
                                        "unload com.duskrell.status-server.plist\n"
                                        "remove com.duskrell.status-server\n");
    }
};

QTEST_GUILESS_MAIN(TestProtocol)

#include "test_protocol.moc"
