#pragma once

#include "gateway/GatewayInUse.h"
#include "gateway/SavedGatewaysModel.h"
#include "gateway/StoredTokens.h"

namespace ostrelle
{

// The settings' gateways: which one is in use, the saved ones, and their tokens. Every change is
// applied to the configuration file as it then is, in the background, and shown once that is done.
// Main thread only.
class GatewayProfiles : public QObject
{
    Q_OBJECT
    Q_PROPERTY(ostrelle::SavedGatewaysModel *saved READ saved CONSTANT)
    Q_PROPERTY(bool isRead READ isRead NOTIFY isReadChanged)
    Q_PROPERTY(QString activeGatewayName READ activeGatewayName NOTIFY activeGatewayNameChanged)
    Q_PROPERTY(QString activeGatewayURL READ activeGatewayURL NOTIFY activeGatewayURLChanged)
    Q_PROPERTY(bool isLocalGateway READ isLocalGateway NOTIFY isLocalGatewayChanged)
    Q_PROPERTY(bool lacksToken READ lacksToken NOTIFY lacksTokenChanged)
    Q_PROPERTY(QString manualURL READ manualURL WRITE setManualURL NOTIFY manualURLChanged)
    Q_PROPERTY(QString manualProblem READ manualProblem NOTIFY manualProblemChanged)
    Q_PROPERTY(bool showTokenField READ showTokenField WRITE setShowTokenField NOTIFY
                   showTokenFieldChanged)
    Q_PROPERTY(QString tokenInput READ tokenInput WRITE setTokenInput NOTIFY tokenInputChanged)
    Q_PROPERTY(QString editingProfileId READ editingProfileId WRITE setEditingProfileId NOTIFY
                   editingProfileIdChanged)
    Q_PROPERTY(QString profileTokenInput READ profileTokenInput WRITE setProfileTokenInput NOTIFY
                   profileTokenInputChanged)
    Q_PROPERTY(QString tokenProblem READ tokenProblem NOTIFY tokenProblemChanged)
    Q_PROPERTY(
        QString profileTokenProblem READ profileTokenProblem NOTIFY profileTokenProblemChanged)
    Q_PROPERTY(
        QString pendingSwitchGateway READ pendingSwitchGateway NOTIFY pendingSwitchGatewayChanged)

public:
    // The monitor and what switches it must live longer.
    GatewayProfiles(Settings settings, GatewayViewModel *gateway, GatewayInUse *inUse,
                    QObject *parent = nullptr);

    // Loads the configuration afresh, in the background, and looks at the stored tokens again.
    Q_INVOKABLE void reload();

    // Asks for confirmation of a switch to that saved gateway.
    Q_INVOKABLE void requestSwitch(const QString &url);
    Q_INVOKABLE void cancelSwitch();
    Q_INVOKABLE void confirmSwitch();

    // Makes it the gateway in use.
    void switchGateway(const SavedGateway &profile);

    // Nothing when one with that URL is saved already, or, with a log line, when the URL is no
    // acceptable address.
    void addGateway(const SavedGateway &profile);

    // Adds what stands in `manualURL`, an address or a URL, and clears that. What is no acceptable
    // address stays.
    Q_INVOKABLE void addManualGateway();

    // Its stored token stays, and so does the gateway in use.
    Q_INVOKABLE void removeGateway(const QString &url);

    // Stores `tokenInput` for the gateway in use and closes the field; one that could not be stored
    // stays in it. May ask the user to unlock the secret store.
    Q_INVOKABLE void saveActiveToken();

    // The same with `profileTokenInput` for the profile that is edited, and its editor.
    Q_INVOKABLE void saveProfileToken();

    SavedGatewaysModel *saved() { return &m_saved; }
    bool isRead() const { return m_isRead; } // the configuration, since this was made
    const OstrelleConfig &config() const { return m_config; }
    std::shared_ptr<const Tokens> tokens() const { return m_settings.tokens; }
    SavedGateway activeGatewaySaved() const { return names().activeGatewaySaved(); }
    QString activeGatewayName() const { return m_activeGatewayName; }
    QString activeGatewayURL() const { return m_activeGatewayURL; }
    bool isLocalGateway() const { return m_isLocalGateway; }

    // No token could be found to send to the gateway in use; false while not known.
    bool lacksToken() const { return m_lacksToken; }

    QString manualURL() const { return m_manualURL; }
    void setManualURL(const QString &url);

    // Why what stands in `manualURL` was not added; empty: nothing is known against it.
    QString manualProblem() const { return m_manualProblem; }

    bool showTokenField() const { return m_showTokenField; }
    void setShowTokenField(bool show);
    QString tokenInput() const { return m_tokenInput; }
    void setTokenInput(const QString &token);

    // The URL of the saved gateway whose token is being edited; empty: none.
    QString editingProfileId() const { return m_editingProfileId; }
    void setEditingProfileId(const QString &url);
    QString profileTokenInput() const { return m_profileTokenInput; }
    void setProfileTokenInput(const QString &token);

    // Why what stands in the field could not be stored; empty: nothing is known against it.
    QString tokenProblem() const { return m_tokenProblem; }
    QString profileTokenProblem() const { return m_profileTokenProblem; }

    // The URL of the saved gateway that awaits confirmation; empty: none.
    QString pendingSwitchGateway() const { return m_pendingSwitchGateway; }

Q_SIGNALS:
    void configChanged();
    void tokensChanged(); // one was stored; how it reads is not known yet
    void isReadChanged();
    void activeGatewayNameChanged();
    void activeGatewayURLChanged();
    void isLocalGatewayChanged();
    void lacksTokenChanged();
    void manualURLChanged();
    void manualProblemChanged();
    void showTokenFieldChanged();
    void tokenInputChanged();
    void editingProfileIdChanged();
    void profileTokenInputChanged();
    void tokenProblemChanged();
    void profileTokenProblemChanged();
    void pendingSwitchGatewayChanged();

private:
    GatewayNames names() const { return {m_config.gateway, m_gateway->magicDNSURL()}; }
    void change(const std::function<void(OstrelleConfig::Gateway &)> &apply);
    void followConfig();
    void showNames();
    void storeToken(const QString &gatewayURL, const QString &token,
                    const std::function<void(const QString &problem)> &show);
    void showActiveTokenSaved(const QString &token, const QString &problem);
    void showProfileTokenSaved(const QString &url, const QString &token, const QString &problem);
    void readTokens();
    void finishReading(const StoredTokens &tokens);
    void showTokens(const StoredTokens &tokens);

    const Settings m_settings;
    GatewayViewModel *const m_gateway;
    GatewayInUse *const m_inUse;
    OstrelleConfig m_config;
    SavedGatewaysModel m_saved;
    QHash<QString, QString> m_tokenTails;
    // One look at the secret store at a time: a frozen one lets each take seconds.
    bool m_isReadingTokens = false;
    bool m_tokensOutdated = false; // something changed during the look that is under way

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayProfiles, bool, m_isRead, false,
                                         &GatewayProfiles::isReadChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_activeGatewayName,
                               &GatewayProfiles::activeGatewayNameChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_activeGatewayURL,
                               &GatewayProfiles::activeGatewayURLChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayProfiles, bool, m_isLocalGateway, false,
                                         &GatewayProfiles::isLocalGatewayChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayProfiles, bool, m_lacksToken, false,
                                         &GatewayProfiles::lacksTokenChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_manualURL,
                               &GatewayProfiles::manualURLChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_manualProblem,
                               &GatewayProfiles::manualProblemChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayProfiles, bool, m_showTokenField, false,
                                         &GatewayProfiles::showTokenFieldChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_tokenInput,
                               &GatewayProfiles::tokenInputChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_editingProfileId,
                               &GatewayProfiles::editingProfileIdChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_profileTokenInput,
                               &GatewayProfiles::profileTokenInputChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_tokenProblem,
                               &GatewayProfiles::tokenProblemChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_profileTokenProblem,
                               &GatewayProfiles::profileTokenProblemChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayProfiles, QString, m_pendingSwitchGateway,
                               &GatewayProfiles::pendingSwitchGatewayChanged)
};

} // namespace ostrelle
