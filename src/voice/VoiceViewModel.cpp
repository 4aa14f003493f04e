#include "voice/VoiceViewModel.h"

#include "core/BackgroundWork.h"
#include "core/Capitalize.h"
#include "core/PropertyUpdateGroup.h"
#include "platform/ChildProcess.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto startDeadline = 15s;
constexpr auto stopDeadline = 10s;
constexpr auto restartPause = 500ms;

struct Appearance {
    QString icon;
    QString color;
};

Appearance appearanceOf(bool running, bool muted, const QString &state)
{
    if (!running) {
        return {u"mic.slash"_s, u"gray"_s};
    }
    if (muted) {
        return {u"mic.slash.fill"_s, u"red"_s};
    }
    if (state == "listening"_L1 || state == "capturing"_L1) {
        return {u"mic.fill"_s, u"green"_s};
    }
    if (state == "processing"_L1) {
        return {u"brain"_s, u"yellow"_s};
    }
    if (state == "speaking"_L1) {
        return {u"speaker.wave.2.fill"_s, u"blue"_s};
    }
    return {u"mic"_s, u"secondary"_s}; // dormant, and every word that is not known
}

QString labelOf(bool running, bool muted, const QString &state)
{
    if (!running) {
        return u"Offline"_s;
    }
    return muted ? u"Muted"_s : capitalizeWords(state);
}

// Ends every agent of this user; for when there is no supervisor.
void killAgentsByName()
{
    utilityPool().start([] {
        static_cast<void>(runChild(
            {.program = u"/bin/bash"_s, .arguments = {u"-c"_s, u"pkill -f voice_agent.py"_s}},
            {.capture = Capture::Nothing}));
    });
}

} // namespace

VoiceViewModel::VoiceViewModel(ServiceManager *serviceManager, qint64 controlPort,
                               VoicePolling polling, QObject *parent)
    : QObject(parent)
    , m_polling(std::move(polling))
    , m_serviceManager(serviceManager)
    , m_controlPort(controlPort)
{
    deriveAppearance();
    connect(&m_controlPort, &VoiceControlPort::statusArrived, this, &VoiceViewModel::apply);
    connect(&m_pollTimer, &QTimer::timeout, this, &VoiceViewModel::pollStatus);
    m_restartPause.setSingleShot(true);
    m_restartPause.setInterval(restartPause);
    connect(&m_restartPause, &QTimer::timeout, this, &VoiceViewModel::start);
    if (m_serviceManager) {
        connect(m_serviceManager, &ServiceManager::startProblemChanged, this,
                [this] { m_startProblem = m_serviceManager->startProblem(); });
    }
    pollStatus();
    m_pollTimer.start(m_polling.interval);
}

void VoiceViewModel::deriveAppearance()
{
    m_stateLabel.setBinding([this] { return labelOf(m_voiceRunning, m_isMuted, m_state); });
    m_stateIcon.setBinding(
        [this] { return appearanceOf(m_voiceRunning, m_isMuted, m_state).icon; });
    m_stateColor.setBinding(
        [this] { return appearanceOf(m_voiceRunning, m_isMuted, m_state).color; });
}

void VoiceViewModel::start()
{
    m_pending = Starting{m_polling.now() + startDeadline};
    m_isLaunching = true;
    m_startProblem = QString(); // of an earlier start
    if (m_voiceRunning) {
        m_controlPort.postAction(u"start"_s);
    } else if (m_serviceManager) {
        m_serviceManager->startVoice();
    }
}

void VoiceViewModel::stop()
{
    const PropertyUpdateGroup together;
    m_pending = Stopping{m_polling.now() + stopDeadline};
    m_controlPort.dropWaitingActions();
    m_restartPause.stop();
    m_isLaunching = false; // a start that was under way is given up
    m_voiceRunning = false;
    m_state = u"offline"_s;
    if (m_serviceManager) {
        m_serviceManager->stopVoice();
        m_serviceManager->setVoiceRunning(false);
    } else {
        killAgentsByName();
    }
}

void VoiceViewModel::restart()
{
    stop();
    m_restartPause.start();
}

void VoiceViewModel::toggleMute()
{
    m_isMuted = !m_isMuted;
    m_controlPort.postAction(m_isMuted ? u"mute"_s : u"unmute"_s);
}

void VoiceViewModel::pollStatus()
{
    m_controlPort.askStatus();
}

void VoiceViewModel::apply(const std::optional<VoiceStatus> &status)
{
    const bool reachable = status.has_value();
    if (mustWait(reachable)) {
        return;
    }
    const PropertyUpdateGroup together;
    m_isLaunching = false;
    m_pending = {};
    m_voiceRunning = reachable;
    adopt(status.value_or(VoiceStatus::offline()));
    if (m_serviceManager) {
        m_serviceManager->setVoiceRunning(reachable);
    }
}

// True while the answer does not show the effect of the pending action, but a later one still may.
bool VoiceViewModel::mustWait(bool reachable) const
{
    if (const auto *starting = std::get_if<Starting>(&m_pending)) {
        return !reachable && m_polling.now() <= starting->deadline;
    }
    if (const auto *stopping = std::get_if<Stopping>(&m_pending)) {
        return reachable && m_polling.now() <= stopping->deadline;
    }
    return false;
}

void VoiceViewModel::adopt(const VoiceStatus &status)
{
    m_state = status.state;
    m_isMuted = status.muted;
    m_tier = status.tier;
    m_wakeWordEnabled = status.wakeWordEnabled;
}

} // namespace ostrelle

#include "moc_VoiceViewModel.cpp"
