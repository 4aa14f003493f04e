#pragma once

#include "voice/ServiceManager.h"
#include "voice/VoiceControlPort.h"

#include <QPointer>
#include <QTimer>

#include <variant>

namespace ostrelle
{

// How the voice control model sees time; a test brings its own.
struct VoicePolling {
    using Clock = std::chrono::steady_clock;

    std::chrono::milliseconds interval = std::chrono::seconds(2);
    std::function<Clock::time_point()> now = &Clock::now;
};

// The voice agent as the user sees it: its state, learnt by polling its control port, and the
// commands to it. Between a click and the agent's reaction, a pending action with a deadline hides
// the old state. Main thread only.
class VoiceViewModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool voiceRunning READ voiceRunning NOTIFY voiceRunningChanged)
    Q_PROPERTY(bool isLaunching READ isLaunching NOTIFY isLaunchingChanged)
    // What the start that is under way waits for in vain; empty when nothing is known to be
    // missing.
    Q_PROPERTY(QString startProblem READ startProblem NOTIFY startProblemChanged)
    Q_PROPERTY(QString state READ state NOTIFY stateChanged)
    Q_PROPERTY(bool isMuted READ isMuted NOTIFY isMutedChanged)
    Q_PROPERTY(QString tier READ tier NOTIFY tierChanged)
    Q_PROPERTY(bool wakeWordEnabled READ wakeWordEnabled NOTIFY wakeWordEnabledChanged)
    Q_PROPERTY(QString stateLabel READ stateLabel NOTIFY stateLabelChanged)
    Q_PROPERTY(QString stateIcon READ stateIcon NOTIFY stateIconChanged)
    Q_PROPERTY(QString stateColor READ stateColor NOTIFY stateColorChanged)

public:
    // Polls the agent's control port at once and from then on at the interval. The service manager
    // may be absent and may go first.
    VoiceViewModel(ServiceManager *serviceManager, qint64 controlPort, VoicePolling polling = {},
                   QObject *parent = nullptr);

    // Starts the agent's process, or wakes an agent that is up.
    Q_INVOKABLE void start();
    Q_INVOKABLE void stop();
    // Stops and, half a second later, starts.
    Q_INVOKABLE void restart();
    // Shown at once; the agent's next answer decides.
    Q_INVOKABLE void toggleMute();

    bool voiceRunning() const { return m_voiceRunning; } // the agent answered the last poll
    bool isLaunching() const { return m_isLaunching; }   // a start waits for the agent's answer
    QString startProblem() const { return m_startProblem; }
    QString state() const { return m_state; } // the agent's own word
    bool isMuted() const { return m_isMuted; }
    QString tier() const { return m_tier; }
    bool wakeWordEnabled() const { return m_wakeWordEnabled; }

    QString stateLabel() const { return m_stateLabel; } // for people
    QString stateIcon() const { return m_stateIcon; }   // a symbol name
    // A system colour: "gray", "red", "green", "yellow", "blue", or "secondary", the neutral
    // foreground.
    QString stateColor() const { return m_stateColor; }

Q_SIGNALS:
    void voiceRunningChanged();
    void isLaunchingChanged();
    void startProblemChanged();
    void stateChanged();
    void isMutedChanged();
    void tierChanged();
    void wakeWordEnabledChanged();
    void stateLabelChanged();
    void stateIconChanged();
    void stateColorChanged();

private:
    struct Starting {
        VoicePolling::Clock::time_point deadline;
    };
    struct Stopping {
        VoicePolling::Clock::time_point deadline;
    };
    using PendingAction = std::variant<std::monostate, Starting, Stopping>;

    void pollStatus();
    void apply(const std::optional<VoiceStatus> &status);
    bool mustWait(bool reachable) const;
    void adopt(const VoiceStatus &status);
    void deriveAppearance();

    const VoicePolling m_polling;
    const QPointer<ServiceManager> m_serviceManager;
    VoiceControlPort m_controlPort;
    QTimer m_pollTimer;
    QTimer m_restartPause; // between the two halves of a restart
    PendingAction m_pending;

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VoiceViewModel, bool, m_voiceRunning, false,
                                         &VoiceViewModel::voiceRunningChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VoiceViewModel, bool, m_isLaunching, false,
                                         &VoiceViewModel::isLaunchingChanged)
    Q_OBJECT_BINDABLE_PROPERTY(VoiceViewModel, QString, m_startProblem,
                               &VoiceViewModel::startProblemChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VoiceViewModel, QString, m_state,
                                         QStringLiteral("unknown"), &VoiceViewModel::stateChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VoiceViewModel, bool, m_isMuted, false,
                                         &VoiceViewModel::isMutedChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VoiceViewModel, QString, m_tier, QStringLiteral("local"),
                                         &VoiceViewModel::tierChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VoiceViewModel, bool, m_wakeWordEnabled, false,
                                         &VoiceViewModel::wakeWordEnabledChanged)
    // Bound to the fields above.
    Q_OBJECT_BINDABLE_PROPERTY(VoiceViewModel, QString, m_stateLabel,
                               &VoiceViewModel::stateLabelChanged)
    Q_OBJECT_BINDABLE_PROPERTY(VoiceViewModel, QString, m_stateIcon,
                               &VoiceViewModel::stateIconChanged)
    Q_OBJECT_BINDABLE_PROPERTY(VoiceViewModel, QString, m_stateColor,
                               &VoiceViewModel::stateColorChanged)
};

} // namespace ostrelle
