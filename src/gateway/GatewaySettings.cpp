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

// The last switch must win, also when the settings are closed meanwhile.
WorkPool &trackingQueue()
{
    static NeverDestroyed<WorkPool> queue;
    return queue.object();
}

// For people, what went wrong.
QString enableTracking()
{
    enableProjectTrackingSkill();
    NotificationManager::send(notificationTitle, u"Project tracking enabled"_s);
    return {};
}

QString disableTracking(const QStringList &toolPaths)
{
    if (const auto disabled = disableProjectTracking(toolPaths); !disabled) {
        return disabled.error() == TrackingSwitchProblem::NoTool
                   ? u"the gateway goes on tracking projects: its tool was not found"_s
                   : u"the gateway goes on tracking projects: its tool does not list its jobs"_s;
    }
    NotificationManager::send(notificationTitle, u"Project tracking disabled"_s);
    return {};
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

void GatewaySettings::lookAtLoginItem(const LoginItemSeen &done)
{
    showLoginItem([](const LoginItem &) {}, done);
}

void GatewaySettings::setLaunchAtLogin(bool launch, const LoginItemSeen &done)
{
    ++m_loginItemChanges;
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
                                    const LoginItemSeen &done)
{
    const auto work = [change] {
        LoginItem item;
        change(item);
        return item.isEnabled();
    };
    whenDone(settingsQueue().run(work), this,
             [this, changes = m_loginItemChanges, done](bool holds) {
                 if (changes == m_loginItemChanges) { // else another one was asked for meanwhile
                     m_launchAtLogin = holds;
                 }
                 done(holds);
             });
}

void GatewaySettings::setAutoStartVoice(bool start)
{
    m_autoStartVoice = start;
    m_preferences->set(preference::autoStartVoice, start);
}

void GatewaySettings::setProjectTrackingEnabled(bool enabled, const TrackingSwitched &done)
{
    if (m_projectTrackingEnabled == enabled && m_trackingProblem.isEmpty()) {
        done({});
        return;
    }
    m_projectTrackingEnabled = enabled;
    m_preferences->set(preference::projectTrackingEnabled, enabled);
    const auto work = [enabled, paths = m_toolPaths] {
        return enabled ? enableTracking() : disableTracking(paths);
    };
    whenDone(trackingQueue().run(work), this, [this, done](const QString &problem) {
        m_trackingProblem = problem;
        done(problem);
    });
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
