#pragma once

#include "support/PrintedLines.h"
#include "support/Processes.h"
#include "support/ScratchHome.h"
#include "voice/ServiceManager.h"

#include <QTest>

// A home with a voice agent: a virtual environment, and a script beside it.
class AgentHome : public ScratchHome
{
public:
    // A shell script in place of Python.
    void installScript(const QByteArray &body) const;

    // The configuration here, with the voice enabled.
    ostrelle::OstrelleConfig config() const;

    // No bundled agent, and a log file of its own.
    ostrelle::SupervisorSurroundings
    surroundings(const ostrelle::SupervisorTime &time = ostrelle::SupervisorTime::real()) const;

    // A supervisor with this configuration and these surroundings.
    ostrelle::ServiceManager
    supervisor(const ostrelle::SupervisorTime &time = ostrelle::SupervisorTime::real()) const;
};

// Time that moves when the test says so.
struct ManualTime {
    ostrelle::SupervisorTime::Clock::time_point now;
    QList<std::pair<std::chrono::milliseconds, std::function<void()>>> scheduled;

    ostrelle::SupervisorTime asTime();
    bool waitForScheduled();
    void runNext() { scheduled.takeFirst().second(); }
};
