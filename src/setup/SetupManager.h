#pragma once

#include "core/BackgroundWork.h"
#include "platform/Paths.h"
#include "settings/Settings.h"
#include "setup/Confinement.h"
#include "setup/ProgressFeed.h"
#include "setup/SetupChecks.h"
#include "setup/StatusLog.h"

#include <QObject>
#include <QProperty>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace ostrelle
{

class AskpassFile;

// What the setup finds around it, and how long it waits.
struct SetupSurroundings {
    std::optional<QString> resources = resourceDirectory();
    QString sudoSearchPath = QStringLiteral("/usr/bin:/bin:/usr/sbin:/sbin");
    bool isConfined = ostrelle::isConfined();
    std::chrono::milliseconds tailscaleTimeout = std::chrono::seconds(15); // of one command
    std::chrono::milliseconds restartPause = std::chrono::seconds(3);      // until a restart shows
};

// Finds out which prerequisites are there, installs what is missing and configures Tailscale's
// HTTPS serving; the setup sheet shows its fields. Everything slow runs in the background: the
// operations return at once. Main thread only.
class SetupManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool showSetup READ showSetup WRITE setShowSetup NOTIFY showSetupChanged)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)
    Q_PROPERTY(bool isComplete READ isComplete NOTIFY isCompleteChanged)
    Q_PROPERTY(ostrelle::SetupChecks checks READ checks NOTIFY checksChanged)
    Q_PROPERTY(ostrelle::StatusLog *statusMessages READ statusMessages CONSTANT)
    Q_PROPERTY(bool hasPython READ hasPython NOTIFY hasPythonChanged)
    Q_PROPERTY(bool hasXcodeCLT READ hasXcodeCLT NOTIFY hasXcodeCLTChanged)
    Q_PROPERTY(QString xcodeCLTNote READ xcodeCLTNote NOTIFY xcodeCLTNoteChanged)
    Q_PROPERTY(bool hasBrew READ hasBrew NOTIFY hasBrewChanged)
    Q_PROPERTY(QString brewNote READ brewNote NOTIFY brewNoteChanged)
    Q_PROPERTY(bool hasNode READ hasNode NOTIFY hasNodeChanged)
    Q_PROPERTY(bool hasDuskrell READ hasDuskrell NOTIFY hasDuskrellChanged)
    Q_PROPERTY(bool hasTailscale READ hasTailscale NOTIFY hasTailscaleChanged)
    Q_PROPERTY(bool tailscaleLoggedIn READ tailscaleLoggedIn NOTIFY tailscaleLoggedInChanged)
    Q_PROPERTY(
        bool tailscaleServeRunning READ tailscaleServeRunning NOTIFY tailscaleServeRunningChanged)
    Q_PROPERTY(bool tailscaleServeNotEnabled READ tailscaleServeNotEnabled NOTIFY
                   tailscaleServeNotEnabledChanged)
    Q_PROPERTY(QString tailscaleServeEnableURL READ tailscaleServeEnableURL NOTIFY
                   tailscaleServeEnableURLChanged)
    Q_PROPERTY(bool hasGatewayToken READ hasGatewayToken NOTIFY hasGatewayTokenChanged)
    Q_PROPERTY(bool hasAgent READ hasAgent NOTIFY hasAgentChanged)
    Q_PROPERTY(
        bool isInstallingDuskrell READ isInstallingDuskrell NOTIFY isInstallingDuskrellChanged)
    Q_PROPERTY(bool isConfiguringTailscale READ isConfiguringTailscale NOTIFY
                   isConfiguringTailscaleChanged)
    Q_PROPERTY(
        QString sudoPassword READ sudoPassword WRITE setSudoPassword NOTIFY sudoPasswordChanged)
    Q_PROPERTY(bool needsSudoPassword READ needsSudoPassword NOTIFY needsSudoPasswordChanged)
    Q_PROPERTY(bool sudoPasswordError READ sudoPasswordError NOTIFY sudoPasswordErrorChanged)
    Q_PROPERTY(QString gatewayTokenInput READ gatewayTokenInput WRITE setGatewayTokenInput NOTIFY
                   gatewayTokenInputChanged)
    Q_PROPERTY(QString compilerCommand READ compilerCommand NOTIFY compilerCommandChanged)
    Q_PROPERTY(QString brewCommand READ brewCommand NOTIFY brewCommandChanged)
    Q_PROPERTY(QString nodeCommand READ nodeCommand NOTIFY nodeCommandChanged)
    Q_PROPERTY(QString voiceCommand READ voiceCommand NOTIFY voiceCommandChanged)
    Q_PROPERTY(bool hasTailscaleApp READ hasTailscaleApp NOTIFY hasTailscaleAppChanged)
    Q_PROPERTY(QString installProblem READ installProblem NOTIFY installProblemChanged)
    Q_PROPERTY(
        QString gatewayTokenProblem READ gatewayTokenProblem NOTIFY gatewayTokenProblemChanged)
    Q_PROPERTY(bool hasConfig READ hasConfig NOTIFY hasConfigChanged)
    Q_PROPERTY(bool hasVenv READ hasVenv NOTIFY hasVenvChanged)
    Q_PROPERTY(bool hasModels READ hasModels NOTIFY hasModelsChanged)

public:
    explicit SetupManager(Settings settings, SetupSurroundings surroundings = {},
                          QObject *parent = nullptr);
    // Takes back the administrator's password from an installation that is under way.
    ~SetupManager() override;

    // Checks every prerequisite, in the order of the fields, and publishes each result as it is
    // found. A later call supersedes an earlier one that is still under way.
    Q_INVOKABLE void runChecks();

    // The same; calls `afterwards` once they have all been made, at the latest when a later run of
    // them has.
    void runChecks(std::function<void()> afterwards);

    // Runs the checks and shows the setup when something is missing that it can install.
    void checkFirstLaunch();

    // Runs the shipped installer of the gateway with the administrator's password, then run() when
    // voice parts are missing. Without a password it only asks for one. One at a time.
    Q_INVOKABLE void installDuskrell();

    // The same with a password that was typed elsewhere, which is not kept.
    void installDuskrell(const QString &password);

    // Writes the configuration and installs the voice agent's parts. One at a time.
    Q_INVOKABLE void run();

    // Opens the gateway's interactive setup in a terminal window.
    Q_INVOKABLE void openOnboarding();

    // Stores the pasted token for the configured gateway and as the active one.
    Q_INVOKABLE void saveGatewayToken();

    // Publishes the gateway and the status server's history to the tailnet. One at a time.
    Q_INVOKABLE void configureTailscaleServe();

    bool showSetup() const { return m_showSetup; }
    void setShowSetup(bool show) { m_showSetup = show; }
    bool isRunning() const { return m_isRunning; }   // run() is under way
    bool isComplete() const { return m_isComplete; } // run() has ended at least once
    StatusLog *statusMessages() { return &m_statusMessages; }

    SetupChecks checks() const { return m_checks; } // what the fields below say, row by row
    bool hasPython() const { return m_hasPython; }
    bool hasXcodeCLT() const { return m_hasXcodeCLT; }
    bool hasBrew() const { return m_hasBrew; }
    // What serves instead on this system, such as "here: cc". Empty when the tool itself is there,
    // or nothing is.
    QString xcodeCLTNote() const { return m_xcodeCLTNote; }
    QString brewNote() const { return m_brewNote; }
    // The command that puts here what is missing. Empty when nothing is, or nobody knows.
    QString compilerCommand() const { return m_compilerCommand; }
    QString brewCommand() const { return m_brewCommand; }
    QString nodeCommand() const { return m_nodeCommand; }
    QString voiceCommand() const { return m_voiceCommand; }    // for what run() needs
    bool hasTailscaleApp() const { return m_hasTailscaleApp; } // in which one signs in
    bool hasNode() const { return m_hasNode; }
    bool hasDuskrell() const { return m_hasDuskrell; }
    bool hasTailscale() const { return m_hasTailscale; }
    bool tailscaleLoggedIn() const { return m_tailscaleLoggedIn; }
    bool tailscaleServeRunning() const { return m_tailscaleServeRunning; }
    bool tailscaleServeNotEnabled() const { return m_tailscaleServeNotEnabled; }  // in the tailnet
    QString tailscaleServeEnableURL() const { return m_tailscaleServeEnableURL; } // may be empty
    bool hasGatewayToken() const { return m_hasGatewayToken; }
    bool hasAgent() const { return m_hasAgent; } // the gateway has been set up
    bool hasConfig() const { return m_hasConfig; }
    bool hasVenv() const { return m_hasVenv; }
    bool hasModels() const { return m_hasModels; }

    // One of the operations that print to the log is under way.
    bool isWorking() const
    {
        return m_isInstallingDuskrell || m_isRunning || m_isConfiguringTailscale;
    }
    bool isInstallingDuskrell() const { return m_isInstallingDuskrell; }
    bool isConfiguringTailscale() const { return m_isConfiguringTailscale; }
    QString sudoPassword() const { return m_sudoPassword; } // forgotten when the install ends
    void setSudoPassword(const QString &password) { m_sudoPassword = password; }
    bool needsSudoPassword() const { return m_needsSudoPassword; }
    bool sudoPasswordError() const { return m_sudoPasswordError; }
    // What went wrong in the last try, for people; empty when nothing has, or a new one is under
    // way.
    QString installProblem() const { return m_installProblem; }
    // What went wrong in the operation that was begun last, for people; empty when nothing has. The
    // voice parts that follow an installation are part of it.
    QString problem() const { return m_problem; }
    QString gatewayTokenProblem() const { return m_gatewayTokenProblem; }
    QString gatewayTokenInput() const { return m_gatewayTokenInput; }
    void setGatewayTokenInput(const QString &token) { m_gatewayTokenInput = token; }

Q_SIGNALS:
    void showSetupChanged();
    void isRunningChanged();
    void isCompleteChanged();
    void checksChanged();
    void hasPythonChanged();
    void hasXcodeCLTChanged();
    void xcodeCLTNoteChanged();
    void hasBrewChanged();
    void brewNoteChanged();
    void hasNodeChanged();
    void hasDuskrellChanged();
    void hasTailscaleChanged();
    void tailscaleLoggedInChanged();
    void tailscaleServeRunningChanged();
    void tailscaleServeNotEnabledChanged();
    void tailscaleServeEnableURLChanged();
    void hasGatewayTokenChanged();
    void hasAgentChanged();
    void isInstallingDuskrellChanged();
    void isConfiguringTailscaleChanged();
    void sudoPasswordChanged();
    void needsSudoPasswordChanged();
    void sudoPasswordErrorChanged();
    void gatewayTokenInputChanged();
    void compilerCommandChanged();
    void brewCommandChanged();
    void nodeCommandChanged();
    void voiceCommandChanged();
    void hasTailscaleAppChanged();
    void installProblemChanged();
    void gatewayTokenProblemChanged();
    void hasConfigChanged();
    void hasVenvChanged();
    void hasModelsChanged();

private:
    // The background halves of the operations, each in the source file of its operation.
    class Checks;
    class GatewayInstallation;
    class VoiceInstallation;
    class ServeConfiguration;

    SetupChecks describe() const;
    void finishChecks(int generation);
    void finishInstallation();
    void installVoice();

    const Settings m_settings;
    const SetupSurroundings m_surroundings;
    StatusLog m_statusMessages;
    ProgressFeed m_feed;
    const std::shared_ptr<AskpassFile> m_askpass; // shared with what runs in the background
    QString m_problem;

    PassLimit m_checkPasses;
    const std::shared_ptr<std::atomic<int>> m_checkGeneration; // of the newest run
    std::vector<std::function<void()>> m_afterChecks;

    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_showSetup, &SetupManager::showSetupChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_isRunning, &SetupManager::isRunningChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_isComplete, &SetupManager::isCompleteChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasPython, &SetupManager::hasPythonChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasXcodeCLT, &SetupManager::hasXcodeCLTChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_xcodeCLTNote,
                               &SetupManager::xcodeCLTNoteChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasBrew, &SetupManager::hasBrewChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_brewNote, &SetupManager::brewNoteChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasNode, &SetupManager::hasNodeChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasDuskrell, &SetupManager::hasDuskrellChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasTailscale,
                               &SetupManager::hasTailscaleChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_tailscaleLoggedIn,
                               &SetupManager::tailscaleLoggedInChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_tailscaleServeRunning,
                               &SetupManager::tailscaleServeRunningChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_tailscaleServeNotEnabled,
                               &SetupManager::tailscaleServeNotEnabledChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_tailscaleServeEnableURL,
                               &SetupManager::tailscaleServeEnableURLChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasGatewayToken,
                               &SetupManager::hasGatewayTokenChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasAgent, &SetupManager::hasAgentChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_isInstallingDuskrell,
                               &SetupManager::isInstallingDuskrellChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_isConfiguringTailscale,
                               &SetupManager::isConfiguringTailscaleChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_sudoPassword,
                               &SetupManager::sudoPasswordChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_needsSudoPassword,
                               &SetupManager::needsSudoPasswordChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_sudoPasswordError,
                               &SetupManager::sudoPasswordErrorChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_gatewayTokenInput,
                               &SetupManager::gatewayTokenInputChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_compilerCommand,
                               &SetupManager::compilerCommandChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_brewCommand,
                               &SetupManager::brewCommandChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_nodeCommand,
                               &SetupManager::nodeCommandChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_voiceCommand,
                               &SetupManager::voiceCommandChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasTailscaleApp,
                               &SetupManager::hasTailscaleAppChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_installProblem,
                               &SetupManager::installProblemChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, QString, m_gatewayTokenProblem,
                               &SetupManager::gatewayTokenProblemChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasConfig, &SetupManager::hasConfigChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasVenv, &SetupManager::hasVenvChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, bool, m_hasModels, &SetupManager::hasModelsChanged)
    // Bound to the fields above.
    Q_OBJECT_BINDABLE_PROPERTY(SetupManager, SetupChecks, m_checks, &SetupManager::checksChanged)
};

} // namespace ostrelle
