#include "voice/AgentHome.h"

#include <QDir>
#include <QTcpServer>

using namespace ostrelle;
using namespace Qt::StringLiterals;

void AgentHome::installDemoAgent(const QByteArray &behaviour) const
{
    QTcpServer freePort;
    freePort.listen(QHostAddress::LocalHost);
    OstrelleConfig config = OstrelleConfig::defaults();
    config.ports.voiceAgent = freePort.serverPort();
    config.save();
    write(u".ostrelle/data/demo-agent.json"_s, behaviour);
    QDir().mkpath(path(u".ostrelle/venv/bin"_s));
    QFile::link(u"/usr/bin/python3"_s, path(u".ostrelle/venv/bin/python"_s));
    QFile::copy(QStringLiteral(DEMO_VOICE_AGENT), path(u".ostrelle/voice_agent.py"_s));
}

void AgentHome::installScript(const QByteArray &body) const
{
    writeScript(u".ostrelle/venv/bin/python"_s, body);
    write(u".ostrelle/voice_agent.py"_s, "");
}

OstrelleConfig AgentHome::config() const
{
    OstrelleConfig config = OstrelleConfig::load();
    config.voice.enabled = true;
    return config;
}

SupervisorSurroundings AgentHome::surroundings(const SupervisorTime &time) const
{
    return {.time = time, .resources = {}, .logFile = path(u"agent.log"_s)};
}

ServiceManager AgentHome::supervisor(const SupervisorTime &time) const
{
    return ServiceManager(config(), settings().preferences, surroundings(time));
}

SupervisorTime ManualTime::asTime()
{
    return {.now = [this] { return now; },
            .later =
                [this](auto delay, QObject *, std::function<void()> action) {
                    scheduled.emplaceBack(delay, std::move(action));
                }};
}

bool ManualTime::waitForScheduled()
{
    constexpr int patienceMilliseconds = 20000;
    return QTest::qWaitFor([this] { return scheduled.size() == 1; }, patienceMilliseconds);
}
