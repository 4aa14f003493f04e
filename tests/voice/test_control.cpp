#include "gateway/StandInGateway.h"
#include "support/Rows.h"
#include "voice/AgentHome.h"
#include "voice/VoiceViewModel.h"

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto quickly = 20ms;
const QByteArray statusPath = "/status";

// Of an HTTP status that nobody shall look at, and JSON with quotes that C++ reads more easily.
QByteArray answerOf(QByteArray body)
{
    return StandInGateway::response(500, body.replace('\'', '"'));
}

const QByteArray listening = answerOf("{'state':'listening'}");
const QByteArray nonsense = answerOf("<html>");

// Waits until the model has surely seen an answer that was given after the call.
bool answersAgain(const StandInGateway &agent)
{
    const auto questions = [&agent] { return agent.requests(statusPath).size(); };
    return QTest::qWaitFor([&, last = questions() + 3] { return questions() >= last; });
}

QString shownBy(const VoiceViewModel &model)
{
    return QStringList{model.stateLabel(), model.stateIcon(), model.stateColor(), model.tier()}
               .join(u' ') +
           (model.wakeWordEnabled() ? u" wake"_s : QString());
}

} // namespace

class TestControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data()
    {
        const Rows<QByteArray, QString> row("body", "shown");
        row("only a state", "{'state':'speaking'}", u"Speaking speaker.wave.2.fill blue local"_s);
        row("all", "{'state':'capturing','muted':false,'tier':'far','wake_word_enabled':true}",
            u"Capturing mic.fill green far wake"_s);
        row("numbers for everything", "{'state':1,'muted':1,'tier':1,'wake_word_enabled':1}",
            u"Unknown mic secondary local"_s);
        row("thinking", "{'state':'processing'}", u"Processing brain yellow local"_s);
        row("words", "{'state':'wARM up éLAN'}", u"Warm Up Élan mic secondary local"_s);
        row("no object", "[]", u"Offline mic.slash gray local"_s);
        row("a flood", "{'state':'" + QByteArray(100'000, 'x') + "'}",
            u"Offline mic.slash gray local"_s);
    }

    void answers()
    {
        QFETCH(const QByteArray, body);
        const AgentHome home;
        StandInGateway agent;
        agent.answer(statusPath, answerOf(body));
        const VoiceViewModel model(nullptr, agent.serverPort(), {.interval = quickly});
        QCOMPARE(model.state(), u"unknown"_s);
        QCOMPARE(shownBy(model), u"Offline mic.slash gray local"_s);

        QTRY_VERIFY(model.voiceRunning() || model.state() == u"offline"_s);
        QTEST(shownBy(model), "shown");
    }

    void pendingAction_data()
    {
        // shown: label, and whether a start is under way
        const Rows<QStringList, QByteArray, std::chrono::milliseconds, QString> row(
            "actions", "answer", "passed", "shown");
        const QString start = u"start"_s;
        const QString stop = u"stop"_s;
        row("start, comes up late", {start}, listening, 60s, u"Listening"_s);
        row("start, still waited for", {start}, nonsense, 15s, u"Offline launching"_s);
        row("start, given up", {start}, nonsense, 15001ms, u"Offline"_s);
        row("stop, has failed", {stop}, listening, 10500ms, u"Listening"_s);
        row("start, no such port", {start}, {}, 15001ms, u"Offline"_s);
        row("stop instead of start", {start, stop}, listening, 10s, u"Offline"_s);
        row("start instead of stop", {stop, start}, listening, 0s, u"Listening"_s);
        row("restart", {u"restart"_s}, nonsense, 0s, u"Offline launching"_s);
    }

    void pendingAction()
    {
        QFETCH(const QStringList, actions);
        QFETCH(const QByteArray, answer);
        QFETCH(const std::chrono::milliseconds, passed);
        QFETCH(const QString, shown);
        const AgentHome home;
        StandInGateway agent;
        agent.answer(statusPath, actions.contains("stop"_L1) ? listening : nonsense);
        const bool hasPort = !answer.isNull();
        ServiceManager manager = home.supervisor();
        auto now = VoicePolling::Clock::now();
        const PrintedLines silence;
        VoiceViewModel model(&manager, hasPort ? agent.serverPort() : 70000,
                             {.interval = quickly, .now = [&] { return now; }});
        QVERIFY(!hasPort || answersAgain(agent));

        for (const QString &action : actions) {
            action == "start"_L1     ? model.start()
            : action == "restart"_L1 ? model.restart()
                                     : model.stop();
        }
        agent.answer(statusPath, answer);
        now += passed;
        QVERIFY(!hasPort || answersAgain(agent));

        QTRY_COMPARE_WITH_TIMEOUT(
            model.stateLabel() + (model.isLaunching() ? u" launching"_s : QString()), shown, 4000);
        QCOMPARE(manager.voiceRunning(), model.voiceRunning());
        QCOMPARE(manager.userStoppedVoice(), actions.last() == "stop"_L1);
        QVERIFY(model.voiceRunning() || model.state() == "offline"_L1);
    }

    void commands()
    {
        const AgentHome home;
        StandInGateway agent;
        agent.answer(statusPath, listening);
        ServiceManager manager = home.supervisor();
        VoiceViewModel model(&manager, agent.serverPort(), {.interval = 1h});
        QTRY_VERIFY(model.voiceRunning());

        model.toggleMute();
        QCOMPARE(model.stateLabel(), u"Muted"_s);
        model.toggleMute();
        model.toggleMute();
        model.start();

        QTRY_COMPARE(agent.requests("/mute").size(), 2);
        QCOMPARE(agent.requests("/unmute").size(), 1);
        QTRY_COMPARE(agent.requests("/start").size(), 1);
        manager.stopVoice(); // of which it has none itself
        QVERIFY(!manager.voiceRunning() && manager.voiceProcessId() == 0);
    }

    void takesTurns_data()
    {
        const Rows<QByteArray, std::chrono::milliseconds, int> row("answer", "turn", "unmuted");
        row("the first hangs", {}, 1h, 0); // two at once could arrive in another order
        row("the first hangs for longer than its turn", {}, 1ms, 8);
        row("the first is answered", nonsense, 1h, 8);
    }

    void takesTurns()
    {
        QFETCH(const QByteArray, answer);
        QFETCH(const std::chrono::milliseconds, turn);
        QFETCH(const int, unmuted);
        StandInGateway agent;
        agent.answer("/mute", answer);
        VoiceControlPort port(agent.serverPort(), turn);
        const QStringList unmutes(10, u"unmute"_s); // of which eight may wait
        for (const QString &action : QStringList(u"mute"_s) + unmutes + QStringList(u"start"_s)) {
            port.postAction(action); // the last one waits for nothing
        }
        QTRY_COMPARE(agent.requestCount(), 2 + unmuted);
        QCOMPARE(agent.requests("/unmute").size(), unmuted);
    }

    void hangingPort()
    {
        StandInGateway agent;
        agent.answer(statusPath, {});
        agent.answer("/start", {});
        VoiceControlPort port(agent.serverPort());
        QStringList states;
        connect(&port, &VoiceControlPort::statusArrived, this,
                [&](const auto &status) { states += status->state; });
        for (int i = 0; i < 42; ++i) {
            port.askStatus();
        }
        QTRY_COMPARE(agent.requestCount(), 40); // lost ones are no reason not to ask
        for (int i = 0; i < 18; ++i) {
            port.postAction(u"start"_s);
        }
        QTRY_COMPARE(agent.requestCount(), 56);

        // A late answer counts as it arrives, and makes room for the question that corrects it.
        agent.answer(statusPath, listening);
        agent.answerHanging(answerOf("{'state':'dormant'}"));
        QTRY_COMPARE(states, QStringList(u"dormant"_s));
        port.askStatus();
        QTRY_COMPARE(states, QStringList({u"dormant"_s, u"listening"_s}));
        QCOMPARE(agent.requestCount(), 57);
    }

    void stopWithoutSupervisor()
    {
        const AgentHome home;
        home.writeScript(u"bin/pkill"_s, "echo \"$@\" > ~/told");
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", home.path(u"bin:"_s).toUtf8() + path);
        VoiceViewModel model(nullptr, 0);
        model.stop();
        QTRY_COMPARE(home.read(u"told"_s), QByteArray("-f voice_agent.py\n"));
        qputenv("PATH", path);
    }
};

QTEST_GUILESS_MAIN(TestControl)

#include "test_control.moc"
