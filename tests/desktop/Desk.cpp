#include "desktop/Desk.h"

#include "settings/OstrelleConfig.h"
#include "support/DemoVoiceAgent.h"
#include "support/Exchange.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
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
    QJsonArray jobs;
    QJsonArray projects;
    for (int i = 1; i <= 12; ++i) {
        QJsonObject card{{u"id"_s, QString::number(i)},
                         {u"name"_s, u"Card %1"_s.arg(i)},
                         {u"status"_s, i % 3 == 0 ? u"red"_s : u"green"_s},
                         {u"schedule"_s, u"every 5m"_s},
                         {u"enabled"_s, true},
                         {u"payload"_s, u"Sort new mail."_s},
                         {u"description"_s, u"All that the house needs."_s},
                         {u"progress"_s, 60}};
        jobs.append(card);
        card.insert(u"workstreams"_s, QJsonArray{card});
        projects.append(card);
    }
    QJsonObject document{{u"version"_s, 1}, {u"updated"_s, QString()}, {u"jobs"_s, jobs}};
    write(u".ostrelle/ostrelle-cron-tracker.json"_s, QJsonDocument(document).toJson());
    document.insert(u"projects"_s, projects);
    write(u".ostrelle/ostrelle-project-tracker.json"_s, QJsonDocument(document).toJson());
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
    session.startTrayHost();
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
