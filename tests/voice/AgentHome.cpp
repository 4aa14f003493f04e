#include "voice/AgentHome.h"

#include "support/Patience.h"

using namespace ostrelle;
using namespace Qt::StringLiterals;

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
    return QTest::qWaitFor([this] { return scheduled.size() == 1; }, patienceMilliseconds);
}
