#include "voice/ServiceManager.h"

#include "core/BackgroundWork.h"
#include "core/LegacyAgent.h"
#include "core/WhenDone.h"
#include "platform/AbandonableThread.h"
#include "platform/Log.h"
#include "platform/PrivateLog.h"
#include "settings/SettingsQueues.h"
#include "voice/PidFile.h"
#include "voice/VoiceAgentCommand.h"

#include <QProcess>
#include <QTimer>

#include <atomic>
#include <ctime>
#include <system_error>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto terminationGrace = 3s;
constexpr int momentToDie = 200;     // in milliseconds, after a KILL
constexpr auto diskPatience = 200ms; // at the end, which must not take a second
constexpr auto crashSeriesGap = 60s; // longer without a crash, and the series is over
constexpr auto longestRestartDelay = 30s;

void log(const QString &text)
{
    logLine(u"[ServiceManager] "_s + text);
}

// 1, 2, 4, 8 and 16 seconds, then always the longest.
std::chrono::seconds restartDelay(qint64 crashesBefore)
{
    constexpr qint64 lastDoubling = 4;
    return crashesBefore > lastDoubling ? longestRestartDelay
                                        : std::chrono::seconds(1 << crashesBefore);
}

SupervisorTime::Clock::time_point timeSinceBoot()
{
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return SupervisorTime::Clock::time_point(std::chrono::seconds(time.tv_sec) +
                                             std::chrono::nanoseconds(time.tv_nsec));
}

bool crashed(const QProcess &process)
{
    return process.exitStatus() == QProcess::CrashExit || process.exitCode() != 0;
}

} // namespace

SupervisorTime SupervisorTime::real()
{
    return {
        .now = &timeSinceBoot,
        .later = [](std::chrono::milliseconds delay, QObject *owner, std::function<void()> action) {
            QTimer::singleShot(delay, Qt::PreciseTimer, owner, std::move(action));
        }};
}

const QString ServiceManager::legacyVoiceAgentLabel = u"ai.duskrell.voice-agent"_s;

QString ServiceManager::legacyVoiceAgentPlist()
{
    return homeDirectory() + u"/Library/LaunchAgents/ai.duskrell.voice-agent.plist"_s;
}

QString ServiceManager::pidFile()
{
    return homeDirectory() + u"/.ostrelle/voice-agent.pid"_s;
}

ServiceManager::ServiceManager(const OstrelleConfig &config,
                               std::shared_ptr<Preferences> preferences,
                               SupervisorSurroundings surroundings, QObject *parent)
    : QObject(parent)
    , m_config(config)
    , m_preferences(std::move(preferences))
    , m_surroundings(std::move(surroundings))
    , m_voiceEnabled(config.voice.enabled)
{
    prepareKills();
    disableLegacyVoiceAgent();
}

ServiceManager::~ServiceManager()
{
    for (QProcess *process : findChildren<QProcess *>(Qt::FindDirectChildrenOnly)) {
        process->disconnect(this);
        killWithGroup(*process, groupOf(*process));
        if (!process->waitForFinished(momentToDie)) {
            // The kernel cannot end it now, and QProcess would wait for half a minute: we give it
            // up.
            process->setParent(nullptr);
        }
    }
}

void ServiceManager::startAll()
{
    disableLegacyVoiceAgent();
    if (m_voiceEnabled && m_preferences->value(preference::autoStartVoice)) {
        startVoice();
    }
}

void ServiceManager::startVoice()
{
    m_userStoppedVoice = false;
    if (m_voiceProcess != nullptr) {
        m_startsAgain = m_isStopping;
        return;
    }
    m_startProblem = QString();
    if (!std::exchange(m_isLooking, true)) {
        lookForAgent();
    }
}

void ServiceManager::lookForAgent()
{
    const auto look = [venv = m_config.voice.venvPath, resources = m_surroundings.resources] {
        return voiceAgentCommand(venv, resources);
    };
    const auto found = [this](const std::expected<ChildCommand, QString> &command) {
        m_isLooking = false;
        if (m_userStoppedVoice) {
            return;
        }
        if (command) {
            launch(*command);
        } else {
            log(command.error());
            m_startProblem = command.error();
        }
    };
    whenDone(userInitiatedPool().run(look), this, found);
}

void ServiceManager::launch(const ChildCommand &command)
{
    auto *const process = new QProcess(this);
    m_voiceProcess = process;
    process->setProgram(command.program);
    process->setArguments(command.arguments);
    process->setProcessEnvironment(*command.environment);
    process->setWorkingDirectory(command.workingDirectory);
    const Descriptor agentLog = openPrivateLog(m_surroundings.logFile);
    // The guard is there before the agent can start anything.
    if (auto guard = GroupGuard::start()) {
        m_guards.emplace(process, std::move(*guard));
    }
    prepareChild(*process, groupOf(*process),
                 agentLog ? std::optional(agentLog.get()) : std::nullopt);
    process->setStandardInputFile(QProcess::nullDevice());
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    connect(process, &QProcess::started, this, [this, process] { handleStart(*process); });
    connect(process, &QProcess::finished, this, [this, process] { handleEnd(process); });
    connect(process, &QProcess::errorOccurred, this, [this, process](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            handleLaunchFailure(process);
        }
    });
    process->start();
}

void ServiceManager::handleStart(const QProcess &process)
{
    const qint64 pid = process.processId();
    m_voiceRunning = true;
    settingsQueue().run([file = pidFile(), pid] { writePidFile(file, pid); });
    log(u"Voice agent started (PID %1)"_s.arg(pid));
}

void ServiceManager::handleLaunchFailure(QProcess *process)
{
    m_guards.erase(process);
    m_voiceProcess = nullptr;
    m_isStopping = false;
    m_startsAgain = false;
    m_startProblem = u"Failed to start voice: "_s + process->errorString();
    log(m_startProblem);
    process->deleteLater();
}

void ServiceManager::handleEnd(QProcess *process)
{
    m_guards.erase(process); // ends what this agent has left behind
    forget(process);
    if (crashed(*process)) {
        handleVoiceCrash();
    }
    process->deleteLater();
    startIfWished();
}

void ServiceManager::handleVoiceCrash()
{
    const auto now = m_surroundings.time.now();
    if (m_lastCrashTime && now - *m_lastCrashTime > crashSeriesGap) {
        m_restartCount = 0;
    }
    m_lastCrashTime = now;
    const auto delay = restartDelay(m_restartCount);
    ++m_restartCount;
    log(u"Voice crashed, restarting in %1.0s (attempt %2)"_s.arg(delay.count())
            .arg(m_restartCount));
    m_surroundings.time.later(delay, this, [this] {
        if (m_voiceEnabled && !m_userStoppedVoice) {
            startVoice();
        }
    });
}

void ServiceManager::stopVoice()
{
    m_userStoppedVoice = true;
    QProcess *process = m_voiceProcess;
    if (process == nullptr) {
        m_voiceRunning = false;
        return;
    }
    m_isStopping = true;
    m_startsAgain = false;
    askGroupToEnd(*process, groupOf(*process));
    m_surroundings.time.later(terminationGrace, process, [this, process] {
        killWithGroup(*process, groupOf(*process));
        forget(process); // even a process that the kernel cannot end now bars no new start
        startIfWished();
    });
}

pid_t ServiceManager::groupOf(const QProcess &process) const
{
    const auto guard = m_guards.find(&process);
    return guard != m_guards.end() ? guard->second.group() : 0;
}

void ServiceManager::startIfWished()
{
    if (m_voiceProcess == nullptr && std::exchange(m_startsAgain, false)) {
        startVoice();
    }
}

void ServiceManager::forget(const QProcess *process)
{
    if (m_voiceProcess == process) {
        m_voiceProcess = nullptr;
        m_isStopping = false;
        m_voiceRunning = false;
    }
}

void ServiceManager::killFromPidFile()
{
    static std::atomic hangs = false; // the disk, which is not waited for a second time
    if (hangs) {
        return;
    }
    const auto deadline = std::chrono::steady_clock::now() + diskPatience;
    const auto kill = [file = pidFile()] { ostrelle::killFromPidFile(file); };
    try {
        hangs = !AbandonableThread(kill).finishUntil(deadline);
    } catch (const std::system_error &) {
        kill(); // there is no thread to be had
    }
}

void ServiceManager::killRemaining()
{
    ostrelle::killRemaining();
}

qint64 ServiceManager::voiceProcessId() const
{
    return m_voiceProcess != nullptr ? m_voiceProcess->processId() : 0;
}

void ServiceManager::setVoiceEnabled(bool enabled)
{
    m_voiceEnabled = enabled;
    m_preferences->set(preference::voiceEnabled, enabled);
}

void ServiceManager::disableLegacyVoiceAgent()
{
    utilityPool().start([] {
        disableLegacyAgent({.label = legacyVoiceAgentLabel, .plist = legacyVoiceAgentPlist()});
    });
}

} // namespace ostrelle

#include "moc_ServiceManager.cpp"
