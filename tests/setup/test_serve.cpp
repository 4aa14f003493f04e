#include "setup/SetupHome.h"
#include "support/Rows.h"

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString manually = u"Try manually: tailscale serve --bg http://127.0.0.1:18789"_s;

} // namespace

class TestServe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void configure_data()
    {
        // tailscale: fails on what ends with a status
        const Rows<QByteArray, QStringList> row("tailscale", "messages");
        const QString serve = u"✓ Tailscale HTTPS serve enabled (gateway)"_s;
        const QString history = u"✓ Tailscale /history route enabled"_s;
        const QString historyFailed = u"⚠ /history route failed — try: tailscale serve --bg "
                                      "--set-path /history http://127.0.0.1:18794"_s;
        const QString configured = u"✓ Duskrell gateway configured (Tailscale + chat API)"_s;
        const QString restarted = u"✓ Duskrell gateway restarted"_s;
        const QString restarting = u"Restarting Tailscale to apply serve config…"_s;
        const QString done = u"✓ Tailscale restarted"_s;

        row("only the second form", "'serve --bg http://127.0.0.1:18789') exit 1;;",
            {serve, history, configured, restarted, restarting, done});
        row("neither form",
            "*https*) printf 'x%.0s' {1..300}; exit 1;; serve*) echo Denied; exit 1;;",
            {u"⚠ Tailscale refused: Denied"_s, u"here, once: sudo tailscale set --operator=$USER"_s,
             u"⚠ Tailscale serve failed: "_s + QString(200, u'x'), manually});
        row("hangs", "serve*) sleep 60;;",
            {u"⚠ Tailscale serve failed: Command timed out after 1s"_s, manually});
        row("no history", "*/history*) exit 1;;",
            {serve, historyFailed, configured, restarted, restarting, done});
        row("sudo restarts it", "restart) exit 1;;",
            {serve, history, configured, restarted, restarting,
             u"✓ Tailscale service restarted"_s});
        row("one word for both forms", "serve*) echo use sudo; exit 1;;",
            {u"here, once: sudo tailscale set --operator=$USER"_s,
             u"⚠ Tailscale serve failed: use sudo"_s, manually});
    }

    void configure()
    {
        QFETCH(const QByteArray, tailscale);
        QFETCH(QStringList, messages);
        const SetupHome home;
        home.addTool(u"tailscale"_s, "exec bash -c 'case \"$*\" in " +
                                         QByteArray(tailscale).replace("'", "'\\''") +
                                         " \"serve status\") echo https://x;; esac' - \"$@\"");
        home.addTool(u"sudo"_s);
        home.addTool(u"duskrell"_s, "exit 1"); // which nobody looks at
        SetupManager manager(home.settings(), home.surroundings());

        manager.configureTailscaleServe();
        manager.configureTailscaleServe(); // one at a time
        QVERIFY(waitFor([&] { return !manager.isConfiguringTailscale(); }));

        messages.prepend(u"Configuring Tailscale HTTPS serve…"_s);
        QCOMPARE(messagesOf(manager), messages);
        QCOMPARE(manager.tailscaleServeRunning(),
                 messages.last() != manually); // checked at the end
    }

    void commands()
    {
        const SetupHome home;
        home.addTool(u"tailscale"_s, "[ $1 != restart ]");
        home.addTool(u"sudo"_s, "exit 1");
        const QString open = home.writeScript(u"bin/duskrell"_s, "echo planted >> ~/calls");
        QFile::setPermissions(open, QFile::Permissions(0x7777));
        home.writeScript(u".bun/bin/duskrell"_s, "exec duskrell-runtime \"$@\"");
        home.writeScript(u".bun/bin/duskrell-runtime"_s, "echo duskrell \"$@\" >> ~/calls");
        auto hold = std::make_optional<BackgroundHold>();
        SetupManager(home.settings(), home.surroundings()).configureTailscaleServe(); // and is gone
        hold.reset();
        SetupManager manager(home.settings(), home.surroundings());
        manager.configureTailscaleServe();
        QVERIFY(waitFor([&] { return !manager.isConfiguringTailscale(); }));
        QCOMPARE(messagesOf(manager).last(), u"⚠ Tailscale not restarted — try: sudo systemctl "
                                             "restart tailscaled"_s);
        QCOMPARE(home.calls().mid(0, 8),
                 QStringList({u"tailscale serve --bg http://127.0.0.1:18789"_s,
                              u"tailscale serve --bg --set-path /history http://127.0.0.1:18794"_s,
                              u"duskrell config set gateway.bind loopback"_s,
                              u"duskrell config set gateway.tailscale.mode serve"_s,
                              u"duskrell config set "
                              "gateway.http.endpoints.chatCompletions.enabled true"_s,
                              u"duskrell gateway restart"_s, u"tailscale restart"_s,
                              u"sudo systemctl restart tailscaled"_s}));
    }
};

QTEST_GUILESS_MAIN(TestServe)

#include "test_serve.moc"
