#include "gateway/GatewaySettings.h"

#include "core/NotificationManager.h"
#include "core/ProjectTracking.h"
#include "core/WhenDone.h"
#include "platform/Log.h"
#include "platform/NeverDestroyed.h"
#include "settings/SettingsQueues.h"

#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString notificationTitle = u"OSTRELLE"_s;

// The last switch must win, also when the settings are closed meanwhile.
QThreadPool &trackingQueue()
{
    static NeverDestroyed<QThreadPool> queue;
    queue.object().setMaxThreadCount(1);
    return queue.object();
}

void enableTracking()
{
    enableProjectTrackingSkill();
    NotificationManager::send(notificationTitle, u"Project tracking enabled"_s);
}

void disableTracking(const QStringList &toolPaths)
{
    if (disableProjectTracking(toolPaths).has_value()) {
        NotificationManager::send(notificationTitle, u"Project tracking disabled"_s);
    }
}

} // namespace

GatewaySettings::GatewaySettings(std::shared_ptr<Preferences> preferences, QStringList toolPaths,
                                 QObject *parent)
    : QObject(parent)
    , m_preferences(std::move(preferences))
    , m_toolPaths(std::move(toolPaths))
{
    m_autoStartVoice = m_preferences->value(preference::autoStartVoice);
    m_projectTrackingEnabled = m_preferences->value(preference::projectTrackingEnabled);
    m_geminiAPIKey = m_preferences->value(preference::geminiAPIKey());
    lookAtLoginItem();
}

void GatewaySettings::lookAtLoginItem(const std::function<void()> &done)
{
    showLoginItem([](const LoginItem &) {}, done);
}

void GatewaySettings::setLaunchAtLogin(bool launch, const std::function<void()> &done)
{
    // Shown as the user wants it first, so that views see it being taken back when it fails.
    m_launchAtLogin = launch;
    const auto change = [launch](LoginItem &item) {
        if (const auto changed = launch ? item.enable() : item.disable(); !changed) {
            logLine(u"[Ostrelle] The autostart entry could not be changed: "_s +
                    changed.error().text);
        }
    };
    showLoginItem(change, done);
}

void GatewaySettings::showLoginItem(const std::function<void(LoginItem &)> &change,
                                    const std::function<void()> &done)
{
    const auto work = [change] {
        LoginItem item;
        change(item);
        return item.isEnabled();
    };
    const int asked = ++m_loginItemWork;
    whenDone(inOrder(settingsQueue(), work), this, [this, asked, done](bool holds) {
        if (asked == m_loginItemWork) { // else the user has asked for something else meanwhile
            m_launchAtLogin = holds;
        }
        done();
    });
}

void GatewaySettings::setAutoStartVoice(bool start)
{
    m_autoStartVoice = start;
    m_preferences->set(preference::autoStartVoice, start);
}

void GatewaySettings::setProjectTrackingEnabled(bool enabled)
{
    if (m_projectTrackingEnabled == enabled) {
        return;
    }
    m_projectTrackingEnabled = enabled;
    m_preferences->set(preference::projectTrackingEnabled, enabled);
    if (enabled) {
        inOrder(trackingQueue(), &enableTracking);
    } else {
        inOrder(trackingQueue(), [paths = m_toolPaths] { disableTracking(paths); });
    }
}

void GatewaySettings::setGeminiAPIKey(const QString &key)
{
    if (m_geminiAPIKey != key) {
        m_geminiAPIKey = key;
        m_preferences->set(preference::geminiAPIKey(), key);
    }
}

QString GatewaySettings::geminiKeyPage()
{
    return u"https://aistudio.google.com/apikey"_s;
}

} // namespace ostrelle

#include "moc_GatewaySettings.cpp"
