#include "core/ShellWord.h"
#include "setup/SetupManager.h"
#include "setup/SetupShell.h"

#include <QTimer>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// As Tailscale words it for who is neither root nor its operator.
bool lacksRights(const QString &refusal)
{
    return refusal.contains("denied"_L1, Qt::CaseInsensitive) || refusal.contains("operator"_L1) ||
           refusal.contains("sudo"_L1);
}

} // namespace

// Publishes the gateway and the status server's history to the tailnet, in the background.
class SetupManager::ServeConfiguration
{
public:
    void run();

    const ProgressFeed::Writer feed;
    const std::chrono::milliseconds timeout;
    QString cli = {}; // quoted

private:
    ShellResult tailscale(const QString &arguments) const
    {
        return runShell(cli + u' ' + arguments + u" 2>&1"_s, timeout);
    }
    bool publishGateway() const;
    void publishHistory() const;
    void configureGateway() const;
    void restartTailscale() const;
};

void SetupManager::ServeConfiguration::run()
{
    if (feed.isManagerGone()) {
        return;
    }
    cli = quoted(tailscaleCLI());
    if (!publishGateway()) {
        feed.publish([](SetupManager &manager) { manager.m_isConfiguringTailscale = false; });
        return;
    }
    publishHistory();
    configureGateway();
    restartTailscale();
    feed.publish([](SetupManager &manager) {
        QTimer::singleShot(manager.m_surroundings.restartPause, &manager, [&manager] {
            manager.runChecks([&manager] { manager.m_isConfiguringTailscale = false; });
        });
    });
}

// Older versions of Tailscale know only the second form.
bool SetupManager::ServeConfiguration::publishGateway() const
{
    const ShellResult first = tailscale(u"serve --bg http://127.0.0.1:18789"_s);
    if (!first.success) {
        const ShellResult second = tailscale(u"serve --bg https / http://127.0.0.1:18789"_s);
        if (!second.success) {
            constexpr qsizetype shownCharacters = 200;
            if (first.output != second.output) {
                feed.addStatus(u"⚠ Tailscale refused: "_s + first.output.left(shownCharacters));
            }
            if (lacksRights(first.output) || lacksRights(second.output)) {
                feed.addStatus(u"here, once: sudo tailscale set --operator=$USER"_s);
            }
            feed.addStatus(u"⚠ Tailscale serve failed: "_s + second.output.left(shownCharacters));
            feed.addStatus(u"Try manually: tailscale serve --bg http://127.0.0.1:18789"_s);
            return false;
        }
    }
    feed.addStatus(u"✓ Tailscale HTTPS serve enabled (gateway)"_s);
    return true;
}

void SetupManager::ServeConfiguration::publishHistory() const
{
    const bool success =
        tailscale(u"serve --bg --set-path /history http://127.0.0.1:18794"_s).success;
    feed.addStatus(success
                       ? u"✓ Tailscale /history route enabled"_s
                       : u"⚠ /history route failed — try: tailscale serve --bg --set-path /history "
                         "http://127.0.0.1:18794"_s);
}

void SetupManager::ServeConfiguration::configureGateway() const
{
    const QString tool = gatewayCLI();
    if (tool.isEmpty()) {
        return;
    }
    const QString duskrell = searchPathFor(tool) + quoted(tool);
    for (const QString &setting : {u"gateway.bind loopback"_s, u"gateway.tailscale.mode serve"_s,
                                   u"gateway.http.endpoints.chatCompletions.enabled true"_s}) {
        runShell(duskrell + u" config set "_s + setting + u" 2>&1"_s);
    }
    feed.addStatus(u"✓ Duskrell gateway configured (Tailscale + chat API)"_s);
    runShell(duskrell + u" gateway restart 2>&1"_s);
    feed.addStatus(u"✓ Duskrell gateway restarted"_s);
}

void SetupManager::ServeConfiguration::restartTailscale() const
{
    feed.addStatus(u"Restarting Tailscale to apply serve config…"_s);
    if (tailscale(u"restart"_s).success) {
        feed.addStatus(u"✓ Tailscale restarted"_s);
        return;
    }
    const bool hasLaunchd = isOnPath(u"launchctl"_s);
    const QString restart =
        u"sudo "_s + (hasLaunchd ? u"launchctl kickstart -k system/com.tailscale.ipn.macsys"_s
                                 : u"systemctl restart tailscaled"_s);
    const bool success = runShell(restart + u" 2>&1"_s, timeout).success;
    feed.addStatus(success || hasLaunchd ? u"✓ Tailscale service restarted"_s
                                         : u"⚠ Tailscale not restarted — try: "_s + restart);
}

void SetupManager::configureTailscaleServe()
{
    if (m_isConfiguringTailscale) {
        return;
    }
    m_problem = QString();
    m_isConfiguringTailscale = true;
    m_feed.writer().addStatus(u"Configuring Tailscale HTTPS serve…"_s);
    userInitiatedPool().start(
        [configuration = ServeConfiguration{.feed = m_feed.writer(),
                                            .timeout = m_surroundings.tailscaleTimeout}]() mutable {
            configuration.run();
        });
}

} // namespace ostrelle
