#pragma once

#include "platform/ChildProcess.h"
#include "platform/Paths.h"
#include "settings/OstrelleConfig.h"
#include "settings/Preferences.h"
#include "voice/GroupGuard.h"

#include <QObject>
#include <QProperty>

#include <chrono>
#include <functional>
#include <map>

class QProcess;

namespace ostrelle
{

// Time as the supervisor sees it, so that a test need not wait for it.
struct SupervisorTime {
    using Clock = std::chrono::steady_clock;

    std::function<Clock::time_point()> now; // counts the time that the computer sleeps
    // Runs the action once, on the main thread after the delay, unless the owner is gone by then.
    std::function<void(std::chrono::milliseconds delay, QObject *owner,
                       std::function<void()> action)>
        later;

    static SupervisorTime real();
};

// What the supervisor finds around it.
struct SupervisorSurroundings {
    SupervisorTime time = SupervisorTime::real();
    std::optional<QString> resources = resourceDirectory();
    QString logFile = QStringLiteral("/tmp/ostrelle-voice.log");
};

// Runs the voice agent as a child process: starts it, restarts it after a crash, with growing
// delays, and stops it. The agent dies with this program, whatever ends it, and what the agent has
// started dies with the agent. Main thread only, but for killFromPidFile().
class ServiceManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool voiceRunning READ voiceRunning WRITE setVoiceRunning NOTIFY voiceRunningChanged
                   BINDABLE bindableVoiceRunning)
    Q_PROPERTY(bool voiceEnabled READ voiceEnabled WRITE setVoiceEnabled NOTIFY voiceEnabledChanged)
    Q_PROPERTY(QString startProblem READ startProblem NOTIFY startProblemChanged)
    Q_PROPERTY(bool userStoppedVoice READ userStoppedVoice WRITE setUserStoppedVoice NOTIFY
                   userStoppedVoiceChanged BINDABLE bindableUserStoppedVoice)

public:
    // The launchd job of an older version that ran the same agent; removed in the background.
    static const QString legacyVoiceAgentLabel;
    static QString legacyVoiceAgentPlist();

    static QString pidFile();

    ServiceManager(const OstrelleConfig &config, std::shared_ptr<Preferences> preferences,
                   SupervisorSurroundings surroundings = {}, QObject *parent = nullptr);
    // Kills an agent that still runs.
    ~ServiceManager() override;

    // Starts the agent when it is enabled and the user wants it started automatically.
    void startAll();

    // Returns at once, for the agent may be on a disk that hangs; `voiceRunning` tells when it has
    // come up. What is missing and what goes wrong is told in the log. While the agent is being
    // stopped, the wish is remembered: it starts when the old one has ended.
    Q_INVOKABLE void startVoice();

    // What the last start lacked, for people; empty when it lacked nothing, or is not known yet.
    QString startProblem() const { return m_startProblem; }

    // Asks the agent and what it has started to end and kills them after 3 seconds. Returns at
    // once; `voiceRunning` tells when it has ended.
    Q_INVOKABLE void stopVoice();

    // Kills the agent that the PID file names: asks it to end, and kills it one second later, or at
    // once when the program exits before that. A disk that hangs is waited for 0.2 seconds, once
    // in a run, and then the file is left alone until it answers. Needs no instance; any thread.
    static void killFromPidFile();

    // Kills at once the agents that still have time left from that; for ways to end the program
    // other than std::exit. Any thread.
    static void killRemaining();

    // The process id of the agent that runs or is about to; 0 when there is none.
    qint64 voiceProcessId() const;

    // Whether the agent is believed to run. The voice control model writes here whether the agent
    // answers.
    bool voiceRunning() const { return m_voiceRunning; }
    void setVoiceRunning(bool running) { m_voiceRunning = running; }
    QBindable<bool> bindableVoiceRunning() { return &m_voiceRunning; }

    // Whether the voice feature is switched on. Every write is also stored in the preferences.
    bool voiceEnabled() const { return m_voiceEnabled; }
    void setVoiceEnabled(bool enabled);

    // Whether the last stop was the user's wish: a crash is then not answered with a restart.
    bool userStoppedVoice() const { return m_userStoppedVoice; }
    void setUserStoppedVoice(bool stopped) { m_userStoppedVoice = stopped; }
    QBindable<bool> bindableUserStoppedVoice() { return &m_userStoppedVoice; }

Q_SIGNALS:
    void voiceRunningChanged();
    void voiceEnabledChanged();
    void userStoppedVoiceChanged();
    void startProblemChanged();

private:
    void lookForAgent();
    void launch(const ChildCommand &command);
    void handleStart(const QProcess &process);
    void handleLaunchFailure(QProcess *process);
    void handleEnd(QProcess *process);
    void handleVoiceCrash();
    void forget(const QProcess *process);
    void startIfWished();
    pid_t groupOf(const QProcess &process) const; // 0: its own
    static void disableLegacyVoiceAgent();

    const OstrelleConfig m_config;
    const std::shared_ptr<Preferences> m_preferences;
    const SupervisorSurroundings m_surroundings;

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ServiceManager, bool, m_voiceRunning, false,
                                         &ServiceManager::voiceRunningChanged)
    Q_OBJECT_BINDABLE_PROPERTY(ServiceManager, bool, m_voiceEnabled,
                               &ServiceManager::voiceEnabledChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ServiceManager, bool, m_userStoppedVoice, false,
                                         &ServiceManager::userStoppedVoiceChanged)

    Q_OBJECT_BINDABLE_PROPERTY(ServiceManager, QString, m_startProblem,
                               &ServiceManager::startProblemChanged)

    bool m_isLooking = false;           // for the agent, before its launch
    QProcess *m_voiceProcess = nullptr; // a child object; set from the launch to the end
    bool m_isStopping = false;          // the agent was asked to end, and has not
    bool m_startsAgain = false;         // once it has
    qint64 m_restartCount = 0;          // crashes in a row, each within a minute of the one before
    std::optional<SupervisorTime::Clock::time_point> m_lastCrashTime;
    // Of what an agent starts, while that agent runs: one that cannot be ended may still be there
    // when the next one starts.
    std::map<const QProcess *, GroupGuard> m_guards;
};

} // namespace ostrelle
