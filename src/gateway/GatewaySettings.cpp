#include "gateway/GatewaySettings.h"

#include "core/NotificationManager.h"
#include "core/ProjectTracking.h"
#include "core/WhenDone.h"
#include "platform/LoginItem.h"
#include "platform/Preferences.h"

#include <memory>
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
    m_launchAtLogin = LoginItem().isEnabled();
    m_autoStartVoice = preferences.boolean(autoStartVoiceKey).value_or(false);
    m_projectTrackingEnabled = preferences.boolean(projectTrackingKey).value_or(true);
    m_geminiAPIKey = preferences.string(geminiAPIKeyKey).value_or(QString());
}

void GatewaySettings::setLaunchAtLogin(bool launch)
{
    // Shown as asked for first, so that a view sees the change being taken back.
    m_launchAtLogin = launch;
    const auto holds = std::make_shared<bool>();
    const auto change = [launch, holds] {
        LoginItem item;
        static_cast<void>(launch ? item.enable() : item.disable());
        *holds = item.isEnabled();
    };
    whenDone(m_writes.run(change), this, [this, holds] { m_launchAtLogin = *holds; });
}

void GatewaySettings::setAutoStartVoice(bool start)
{
    m_autoStartVoice = start;
    store(autoStartVoiceKey, start);
}

void GatewaySettings::setProjectTrackingEnabled(bool enabled)
{
    if (m_projectTrackingEnabled == enabled) {
        return;
    }
    m_projectTrackingEnabled = enabled;
    store(projectTrackingKey, enabled);
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
        store(geminiAPIKeyKey, key);
    }
}

template<typename Value>
void GatewaySettings::store(const QString &key, const Value &value)
{
    m_writes.run([key, value] { Preferences().set(key, value); });
}

QString GatewaySettings::geminiKeyPage()
{
    return u"https://aistudio.google.com/apikey"_s;
}

} // namespace ostrelle
