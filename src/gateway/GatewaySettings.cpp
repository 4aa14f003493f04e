#include "gateway/GatewaySettings.h"

#include "core/NotificationManager.h"
#include "core/ProjectTracking.h"
#include "core/WhenDone.h"
#include "settings/Preferences.h"
#include "settings/SettingsQueue.h"

#include <QtConcurrent>

#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString autoStartVoiceKey = u"autoStartVoice"_s;
const QString projectTrackingKey = u"projectTrackingEnabled"_s;
const QString geminiAPIKeyKey = u"geminiAPIKey"_s;
const QString notificationTitle = u"OSTRELLE"_s;

void enableTracking()
{
    enableProjectTrackingSkill();
    NotificationManager::send(notificationTitle, u"Project tracking enabled"_s);
}

void disableTracking(const QStringList &toolPaths)
{
    if (disableProjectTracking(toolPaths)) {
        NotificationManager::send(notificationTitle, u"Project tracking disabled"_s);
    }
}

} // namespace

GatewaySettings::GatewaySettings(QStringList toolPaths, QObject *parent)
    : QObject(parent)
    , m_toolPaths(std::move(toolPaths))
{
    const Preferences preferences;
    m_autoStartVoice = preferences.boolean(autoStartVoiceKey).value_or(false);
    m_projectTrackingEnabled = preferences.boolean(projectTrackingKey).value_or(true);
    m_geminiAPIKey = preferences.string(geminiAPIKeyKey).value_or(QString());
    showLoginItem([](const LoginItem &) {});
}

void GatewaySettings::setLaunchAtLogin(bool launch)
{
    // Shown as the user wants it first, so that views see it being taken back when it fails.
    m_launchAtLogin = launch;
    showLoginItem(
        [launch](LoginItem &item) { static_cast<void>(launch ? item.enable() : item.disable()); });
}

void GatewaySettings::showLoginItem(const std::function<void(LoginItem &)> &change)
{
    const auto work = [change] {
        LoginItem item;
        change(item);
        return item.isEnabled();
    };
    const int asked = ++m_loginItemWork;
    whenDone(QtConcurrent::run(&settingsQueue(), work), this, [this, asked](bool holds) {
        if (asked == m_loginItemWork) { // else the user has asked for something else meanwhile
            m_launchAtLogin = holds;
        }
    });
}

void GatewaySettings::setAutoStartVoice(bool start)
{
    m_autoStartVoice = start;
    Preferences().set(autoStartVoiceKey, start);
}

void GatewaySettings::setProjectTrackingEnabled(bool enabled)
{
    if (m_projectTrackingEnabled == enabled) {
        return;
    }
    m_projectTrackingEnabled = enabled;
    Preferences().set(projectTrackingKey, enabled);
    if (enabled) {
        m_trackingWork.run(&enableTracking);
    } else {
        m_trackingWork.run([paths = m_toolPaths] { disableTracking(paths); });
    }
}

void GatewaySettings::setGeminiAPIKey(const QString &key)
{
    if (m_geminiAPIKey != key) {
        m_geminiAPIKey = key;
        Preferences().set(geminiAPIKeyKey, key);
    }
}

QString GatewaySettings::geminiKeyPage()
{
    return u"https://aistudio.google.com/apikey"_s;
}

} // namespace ostrelle

#include "moc_GatewaySettings.cpp"
