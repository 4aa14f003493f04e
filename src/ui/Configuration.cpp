#include "ui/Configuration.h"

#include "settings/OstrelleConfig.h"
#include "core/WhenDone.h"
#include "settings/SettingsQueue.h"

#include <QtConcurrentRun>

namespace ostrelle
{

void Configuration::setWatchedURL(const QString &url)
{
    if (url == m_watchedURL) {
        return;
    }
    m_watchedURL = url;
    if (gatewayURL().isEmpty()) {
        m_gatewayURL = url;
    }
    // Queued: whoever changes what is watched may save the configuration just after that.
    QMetaObject::invokeMethod(this, &Configuration::load, Qt::QueuedConnection);
}

void Configuration::load()
{
    const auto read = [] { return OstrelleConfig::load().gateway.url; };
    whenDone(QtConcurrent::run(&settingsQueue(), read), this,
             [this](const QString &url) { m_gatewayURL = url; });
}

} // namespace ostrelle

#include "moc_Configuration.cpp"
