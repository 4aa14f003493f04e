#pragma once

#include "core/BackgroundWork.h"
#include "core/DesktopOpen.h"
#include "core/HttpClient.h"
#include "gateway/NetworkHelpers.h"
#include "settings/Settings.h"

#include <QObject>
#include <QProperty>
#include <QTimer>

namespace ostrelle
{

// What the gateway monitor finds around it; a test brings its own.
struct GatewaySurroundings {
    TailscalePlaces tailscale;
    std::chrono::milliseconds pollInterval = std::chrono::seconds(3);
    QString voiceLog = QStringLiteral("/tmp/ostrelle-voice.log");
    std::function<void(const QString &file)> openFile = &openWithDesktop; // on a background thread
    std::chrono::milliseconds healthDeadline = std::chrono::seconds(60);
};

// Watches the gateway: whether it can be reached, whether it still takes the token, and how safe
// the way to it is. Every three seconds it starts three probes, which run and end independently.
// Optional texts are empty while there is nothing to tell. Main thread only.
class GatewayViewModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool gatewayOnline READ gatewayOnline NOTIFY gatewayOnlineChanged)
    Q_PROPERTY(QString tailscaleServeURL READ tailscaleServeURL NOTIFY tailscaleServeURLChanged)
    Q_PROPERTY(QString tailscaleIP READ tailscaleIP NOTIFY tailscaleIPChanged)
    Q_PROPERTY(bool tailscaleInstalled READ tailscaleInstalled NOTIFY tailscaleInstalledChanged)
    Q_PROPERTY(bool isSecure READ isSecure NOTIFY isSecureChanged)
    Q_PROPERTY(bool isEnablingTailscale READ isEnablingTailscale NOTIFY isEnablingTailscaleChanged)
    Q_PROPERTY(
        QString enableTailscaleError READ enableTailscaleError NOTIFY enableTailscaleErrorChanged)
    Q_PROPERTY(bool showSecurityWarning READ showSecurityWarning NOTIFY showSecurityWarningChanged)
    Q_PROPERTY(bool securityWarningDismissed READ securityWarningDismissed NOTIFY
                   securityWarningDismissedChanged)
    Q_PROPERTY(bool tokenRejected READ tokenRejected NOTIFY tokenRejectedChanged)
    Q_PROPERTY(bool isResettingToken READ isResettingToken NOTIFY isResettingTokenChanged)
    Q_PROPERTY(QString gatewayURL READ gatewayURL WRITE setGatewayURL NOTIFY gatewayURLChanged)
    Q_PROPERTY(bool useMagicDNS READ useMagicDNS WRITE setUseMagicDNS NOTIFY useMagicDNSChanged)
    Q_PROPERTY(QString magicDNSURL READ magicDNSURL NOTIFY magicDNSURLChanged)
    Q_PROPERTY(QString preferredURL READ preferredURL NOTIFY preferredURLChanged)

public:
    // Starts the first cycle of probes at once.
    explicit GatewayViewModel(Settings settings, GatewaySurroundings surroundings = {},
                              QObject *parent = nullptr);

    // Starts one cycle of probes; none for a gateway URL that cannot be parsed. When several probes
    // of one kind hang already, that kind is left out.
    Q_INVOKABLE void pollHealth();

    // Switches the gateway to Tailscale serve with its own tool; `enableTailscaleError` tells what
    // went wrong. Does nothing while a switch is under way.
    Q_INVOKABLE void enableTailscaleServe();

    // Has the gateway make a new token and stores it for the gateway that is in use now. Does
    // nothing while that is under way. A failure is told by a notification and a log line.
    Q_INVOKABLE void resetGatewayToken();

    // Hides the warning until the program ends.
    Q_INVOKABLE void dismissSecurityWarning();

    // Opens the voice agent's log with the desktop's application for it, and creates it if missing.
    Q_INVOKABLE void openDebugLog();

    bool gatewayOnline() const { return m_gatewayOnline; } // it answered, whatever the status
    QString tailscaleServeURL() const { return m_tailscaleServeURL; }
    QString tailscaleIP() const { return m_tailscaleIP; }
    bool tailscaleInstalled() const { return m_tailscaleInstalled; }
    bool isSecure() const { return m_isSecure; } // there is a way to it through Tailscale
    bool isEnablingTailscale() const { return m_isEnablingTailscale; }
    QString enableTailscaleError() const { return m_enableTailscaleError; }
    bool showSecurityWarning() const { return m_showSecurityWarning; }
    bool securityWarningDismissed() const { return m_securityWarningDismissed; }
    bool tokenRejected() const { return m_tokenRejected; }
    bool isResettingToken() const { return m_isResettingToken; }
    const QString &tokenResetGateway() const { return m_tokenResetGateway; } // URL of the last one
    const QString &tokenResetProblem() const { return m_tokenResetProblem; } // of the last one

    // The base URL of the gateway in use. Whoever sets it calls pollHealth() next.
    QString gatewayURL() const { return m_gatewayURL; }
    // Gives up the questions to the old gateway that are under way.
    void setGatewayURL(const QString &url);

    // Whether other devices are offered the MagicDNS address. Every write is stored in the
    // preferences.
    bool useMagicDNS() const { return m_useMagicDNS; }
    void setUseMagicDNS(bool use);

    // Once it is known, it is kept until the program ends.
    QString magicDNSURL() const { return m_magicDNSURL; }

    // The URL by which other devices reach this machine's gateway.
    QString preferredURL() const { return m_preferredURL; }

Q_SIGNALS:
    void gatewayOnlineChanged();
    void tailscaleServeURLChanged();
    void tailscaleIPChanged();
    void tailscaleInstalledChanged();
    void isSecureChanged();
    void isEnablingTailscaleChanged();
    void enableTailscaleErrorChanged();
    void showSecurityWarningChanged();
    void securityWarningDismissedChanged();
    void tokenRejectedChanged();
    void isResettingTokenChanged();
    void gatewayURLChanged();
    void useMagicDNSChanged();
    void magicDNSURLChanged();
    void preferredURLChanged();

private:
    struct Tailscale {
        bool installed = false;
        std::optional<QString> serveURL = std::nullopt;
        std::optional<QString> ip = std::nullopt;
        std::optional<QString> magicDNS = std::nullopt;
    };

    static Tailscale lookAtTailscale(const TailscalePlaces &places);

    void probeHealth(const QUrl &url);
    void probeToken();
    void askWithToken(const QString &gatewayURL, const QString &token, int probe);
    void probeTailscale();
    void show(const Tailscale &tailscale);
    void finishEnabling(const std::expected<void, QString> &outcome);
    void finishReset(const QString &problem);
    void keepPreferredURL();
    QString derivePreferredURL() const;

    const Settings m_settings;
    const GatewaySurroundings m_surroundings;
    HttpClient m_http;
    QTimer m_pollTimer;
    PassLimit m_healthPasses;
    int m_healthProbes = 0; // so far
    int m_answeredProbe = 0;
    PassLimit m_tokenPasses;
    int m_tokenProbes = 0;
    int m_answeredTokenProbe = 0; // what an earlier one has to tell is no longer true
    PassLimit m_tailscalePasses;
    QString m_tokenResetGateway;
    QString m_tokenResetProblem; // for people; empty: it has worked

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayViewModel, bool, m_gatewayOnline, false,
                                         &GatewayViewModel::gatewayOnlineChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayViewModel, QString, m_tailscaleServeURL,
                               &GatewayViewModel::tailscaleServeURLChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayViewModel, QString, m_tailscaleIP,
                               &GatewayViewModel::tailscaleIPChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayViewModel, bool, m_tailscaleInstalled, false,
                                         &GatewayViewModel::tailscaleInstalledChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayViewModel, bool, m_isSecure, false,
                                         &GatewayViewModel::isSecureChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayViewModel, bool, m_isEnablingTailscale, false,
                                         &GatewayViewModel::isEnablingTailscaleChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayViewModel, QString, m_enableTailscaleError,
                               &GatewayViewModel::enableTailscaleErrorChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayViewModel, bool, m_showSecurityWarning, false,
                                         &GatewayViewModel::showSecurityWarningChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayViewModel, bool, m_securityWarningDismissed, false,
                                         &GatewayViewModel::securityWarningDismissedChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayViewModel, bool, m_tokenRejected, false,
                                         &GatewayViewModel::tokenRejectedChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayViewModel, bool, m_isResettingToken, false,
                                         &GatewayViewModel::isResettingTokenChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayViewModel, QString, m_gatewayURL,
                               &GatewayViewModel::gatewayURLChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayViewModel, bool, m_useMagicDNS, true,
                                         &GatewayViewModel::useMagicDNSChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayViewModel, QString, m_magicDNSURL,
                               &GatewayViewModel::magicDNSURLChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayViewModel, QString, m_preferredURL,
                               &GatewayViewModel::preferredURLChanged)
};

} // namespace ostrelle
