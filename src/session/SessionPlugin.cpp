#include "platform/SessionServices.h"
#include "session/Notifier.h"
#include "session/SecretService.h"

#include <glib.h>
#include <memory>

namespace ostrelle
{

namespace
{

// GLib would print by itself, and wait for a terminal that is paused.
void sendMessagesToLog()
{
    g_log_set_writer_func(
        [](GLogLevelFlags level, const GLogField *fields, gsize count, gpointer /*data*/) {
            if (g_log_writer_default_would_drop(level, nullptr) == FALSE) {
                const std::unique_ptr<gchar, decltype(&g_free)> line(
                    g_log_writer_format_fields(level, fields, count, FALSE), &g_free);
                qWarning("%s", line.get());
            }
            return G_LOG_WRITER_HANDLED;
        },
        nullptr, nullptr);
    g_set_printerr_handler([](const gchar *text) { qWarning("%s", text); });
}

} // namespace

class SessionPlugin : public QObject, public SessionServices
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "ai.duskrell.ostrelle.SessionServices")
    Q_INTERFACES(ostrelle::SessionServices)

public:
    SessionPlugin() { sendMessagesToLog(); }

    SecretStore &secrets() override { return m_secrets; }

    void showNotification(const QString &title, const QString &body) override
    {
        showDesktopNotification(title, body);
    }

private:
    SecretService m_secrets;
};

} // namespace ostrelle

#include "SessionPlugin.moc"
