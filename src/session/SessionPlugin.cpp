#include "platform/SessionServices.h"
#include "session/Notifier.h"
#include "session/SecretService.h"

namespace ostrelle
{

class SessionPlugin : public QObject, public SessionServices
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "ai.duskrell.ostrelle.SessionServices")
    Q_INTERFACES(ostrelle::SessionServices)

public:
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
