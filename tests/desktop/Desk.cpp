#include "desktop/Desk.h"

#include "settings/OstrelleConfig.h"

#include <QDir>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <algorithm>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    return probe.serverPort();
}

} // namespace

DesktopHome::DesktopHome()
    : voicePort(freePort())
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
    QDir().mkpath(path(u".ostrelle/venv/bin"_s));
    QFile::link(u"/usr/bin/python3"_s, path(u".ostrelle/venv/bin/python"_s));
    QFile::link(QStringLiteral(DEMO_VOICE_AGENT), path(u".ostrelle/voice_agent.py"_s));
    // The setup's downloads come from nowhere.
    write(u".bash_profile"_s, "PATH=$HOME/bin:$PATH");
    writeScript(u"bin/curl"_s, "touch \"$3\"");
    write(u".config/ai.duskrell.ostrelle.conf"_s, "[General]\nautoStartVoice=true\n");
}

QByteArray DesktopHome::voiceStatus() const
{
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, voicePort);
    client.write("GET /status HTTP/1.1\r\nConnection: close\r\n\r\n");
    QByteArray answer;
    while (client.waitForReadyRead(2000)) {
        answer += client.readAll();
        if (answer.contains('}')) {
            return answer;
        }
    }
    return {};
}

bool DesktopHome::wasAsked(const QString &target) const
{
    return std::ranges::any_of(gateway.recorded(), [&](const QJsonObject &request) {
        return request.value(u"target"_s) == target;
    });
}

Desk::Desk()
{
    bus.startKeyring();
    session.startTrayHost();
    program.emplace();
    if (const auto icon = XSession::waitForIcon()) {
        XSession::click(icon->center());
        isOpen =
            QTest::qWaitFor([] { return XSession::panel().has_value(); }, patienceMilliseconds);
    }
}

bool Desk::press(const QString &name, const QString &role) const
{
    const auto place = reader.waitFor(name, role);
    if (place) {
        XSession::click(place->center());
    }
    return place.has_value();
}

QString Desk::screenshot(const QString &name)
{
    const QDir directory(qEnvironmentVariable("OSTRELLE_BINARY_DIR") + u"/screenshots"_s);
    directory.mkpath(u"."_s);
    const QString file = directory.filePath(name + u".png"_s);
    QProcess::execute(u"import"_s, {u"-window"_s, u"root"_s, file});
    return file;
}
