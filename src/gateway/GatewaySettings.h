#pragma once

#include "gateway/ProjectTrackingSwitch.h"
#include "platform/LoginItem.h"
#include "settings/Preferences.h"

#include <QObject>
#include <QProperty>

#include <functional>

namespace ostrelle
{

// The preferences on the gateway's settings screen, one for all who show or change them. Every
// change is stored in the background. Main thread only.
class GatewaySettings : public QObject
{
    Q_OBJECT
    Q_PROPERTY(
        bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY launchAtLoginChanged)
    Q_PROPERTY(bool autoStartVoice READ autoStartVoice WRITE setAutoStartVoice NOTIFY
                   autoStartVoiceChanged)
    Q_PROPERTY(bool projectTrackingEnabled READ projectTrackingEnabled WRITE
                   setProjectTrackingEnabled NOTIFY projectTrackingEnabledChanged)
    Q_PROPERTY(
        QString geminiAPIKey READ geminiAPIKey WRITE setGeminiAPIKey NOTIFY geminiAPIKeyChanged)
    Q_PROPERTY(QString geminiKeyPage READ geminiKeyPage CONSTANT)

public:
    // The paths at which the gateway's tool is looked for first.
    explicit GatewaySettings(std::shared_ptr<Preferences> preferences,
                             QStringList toolPaths = gatewayToolPlaces(),
                             QObject *parent = nullptr);

    // Told whether the desktop starts the program, once it is known.
    using LoginItemSeen = std::function<void(bool holds)>;

    // Shows what the desktop has, once that was looked up. A change that failed is taken back;
    // `done` is told what holds then, whatever was asked for meanwhile.
    bool launchAtLogin() const { return m_launchAtLogin; }
    void setLaunchAtLogin(bool launch, const LoginItemSeen &done = [](bool) {});

    // Looks again at what the desktop has: others may have changed it.
    void lookAtLoginItem(const LoginItemSeen &done = [](bool) {});

    bool autoStartVoice() const { return m_autoStartVoice; }
    void setAutoStartVoice(bool start);

    // A change also switches the gateway's skill on or off, in the background; a notification tells
    // when that is done. `done` is told, for people, what kept the gateway's tool from it; an empty
    // text when nothing has.
    using TrackingSwitched = std::function<void(const QString &problem)>;
    bool projectTrackingEnabled() const { return m_projectTrackingEnabled; }
    void
    setProjectTrackingEnabled(bool enabled, const TrackingSwitched &done = [](const QString &) {});

    QString geminiAPIKey() const { return m_geminiAPIKey; }
    void setGeminiAPIKey(const QString &key);

    // Where a user gets a key.
    static QString geminiKeyPage();

Q_SIGNALS:
    void launchAtLoginChanged();
    void autoStartVoiceChanged();
    void projectTrackingEnabledChanged();
    void geminiAPIKeyChanged();

private:
    void showLoginItem(const std::function<void(LoginItem &)> &change, const LoginItemSeen &done);

    const std::shared_ptr<Preferences> m_preferences;
    const QStringList m_toolPaths;
    int m_loginItemChanges = 0; // what is known from before the last one is not shown
    QString m_trackingProblem;  // of the last switch

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewaySettings, bool, m_launchAtLogin, false,
                                         &GatewaySettings::launchAtLoginChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewaySettings, bool, m_autoStartVoice, false,
                                         &GatewaySettings::autoStartVoiceChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewaySettings, bool, m_projectTrackingEnabled, true,
                                         &GatewaySettings::projectTrackingEnabledChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewaySettings, QString, m_geminiAPIKey,
                               &GatewaySettings::geminiAPIKeyChanged)
};

} // namespace ostrelle
