#include "desktop/Desk.h"

#include "settings/OstrelleConfig.h"
#include "support/DemoVoiceAgent.h"
#include "support/Exchange.h"

#include <QDir>
#include <QProcess>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

DesktopHome::DesktopHome()
    : voicePort(installDemoVoiceAgent(*this))
{
    playSimulator(*this, {{u"record"_s, true}});
    OstrelleConfig config = OstrelleConfig::defaults();
    config.gateway.url = gateway.url();
    config.gateway.saved =
        QList<SavedGateway>{{.name = u"Demo"_s, .url = gateway.url()},
                            {.name = u"Second"_s, .url = u"http://127.0.0.2:9"_s}};
    config.ports.status = 0;
    config.ports.voiceAgent = voicePort;
    config.voice.enabled = true;
    config.save();
    write(u".ostrelle/data/demo-agent.json"_s, R"({"step_seconds": 3600})"); // it stays as it is
    writeTrackers();
    write(u".config/ai.duskrell.ostrelle.conf"_s, "[General]\nautoStartVoice=true\n");
}

void DesktopHome::writeTrackers() const
{
    write(u".ostrelle/ostrelle-agent-tracker.json"_s, R"({"completions": [], "agents": {
        "main": {"status": "working", "progress": 42, "model": "atlas-large"},
        "code-reviewer": {"status": "busy", "progress": 80}, "research": {"status": "idle"},
        "writer": {"status": "error"}, "mail": {"status": "idle"}}})");
    const auto card = [](int i, const QString &more) {
        return uR"({"id": "%1", "name": "Card %1", "status": "%2", "schedule": "every 5m",
            "enabled": true, "payload": "Sort new mail.", "progress": 60,
            "description": "All that the house needs."%3})"_s.arg(i)
            .arg(i % 3 == 0 ? u"red"_s : u"green"_s, more);
    };
    QStringList jobs;
    QStringList projects;
    for (int i = 1; i <= 12; ++i) {
        jobs << card(i, {});
        projects << card(i, u", \"workstreams\": [%1]"_s.arg(card(i, {})));
    }
    const QString document = uR"({"version": 1, "updated": "", "%1": [%2]})"_s;
    write(u".ostrelle/ostrelle-cron-tracker.json"_s,
          document.arg(u"jobs"_s, jobs.join(u',')).toUtf8());
    write(u".ostrelle/ostrelle-project-tracker.json"_s,
          document.arg(u"projects"_s, projects.join(u',')).toUtf8());
}

QByteArray DesktopHome::voiceStatus() const
{
    return exchange(voicePort, "GET /status HTTP/1.1\r\nConnection: close\r\n\r\n");
}

Desk::Desk(qreal scale)
    : m_scale(scale)
{
    qputenv("QT_SCALE_FACTOR", QByteArray::number(scale));
    bus.startKeyring();
    program.emplace();
    if (const auto icon = XSession::waitForIcon()) {
        XSession::click(icon->center());
        isOpen =
            QTest::qWaitFor([] { return XSession::panel().has_value(); }, patienceMilliseconds);
    }
}

Desk::~Desk()
{
    qunsetenv("QT_SCALE_FACTOR");
}

bool Desk::press(const QString &name, const QString &role) const
{
    const auto place = reader.waitFor(name, role);
    if (place) {
        XSession::click((QPointF(place->center()) * m_scale).toPoint());
    }
    return place.has_value();
}

bool Desk::enter(const QString &field) const
{
    const auto isThere = [&] {
        press(field); // what appears meanwhile may have moved it
        const auto control = reader.focused();
        return control && control->name == field;
    };
    return QTest::qWaitFor(isThere, patienceMilliseconds);
}

QString Desk::screenshot(const QString &name)
{
    const QRect panel = XSession::panel().value_or(QRect());
    const QDir directory(qEnvironmentVariable("OSTRELLE_BINARY_DIR") + u"/screenshots"_s);
    directory.mkpath(u"."_s);
    const QString file = directory.filePath(name + u".png"_s);
    QProcess::execute(
        u"import"_s,
        {u"-window"_s, u"root"_s, u"-crop"_s,
         u"%1x%2+%3+%4"_s.arg(panel.width()).arg(panel.height()).arg(panel.x()).arg(panel.y()),
         u"+repage"_s, file});
    return file;
}
