#include "ctl/StatusText.h"

#include "ctl/Told.h"

#include <QJsonArray>
#include <QStringList>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int subjectColumns = 15;

QString light(const QJsonValue &light, const Terminal &terminal)
{
    return terminal.colored(told(light, "word"_L1), light["color"_L1].toString());
}

QString line(const QString &subject, const QStringList &parts)
{
    QStringList known = parts;
    known.removeAll(QString());
    return known.isEmpty() ? QString()
                           : subject.leftJustified(subjectColumns) + known.join(u", "_s) + u'\n';
}

QString voiceLine(const QJsonValue &voice, const Terminal &terminal)
{
    const bool isRunning = voice["state"_L1].toString() != "offline"_L1;
    return line(u"Voice"_s, {light(voice["light"_L1], terminal),
                             isRunning ? told(voice, "label"_L1) : QString(),
                             isRunning ? told(voice, "tier"_L1) : QString()});
}

QString serverLine(const QJsonValue &server, const Terminal &terminal)
{
    const qint64 port = server["port"_L1].toInteger();
    return line(u"Status server"_s, {light(server["light"_L1], terminal),
                                     port > 0 ? u"port "_s + QString::number(port) : QString()});
}

QString documentLine(const QJsonValue &document)
{
    const bool isThere = document["bytes"_L1].isDouble();
    const QString name = told(document, "name"_L1);
    return line(
        name.left(1).toUpper() + name.mid(1),
        {isThere ? told(document, "age"_L1) : u"missing"_s,
         isThere ? QString::number(document["bytes"_L1].toInteger()) + u" bytes"_s : QString(),
         told(document, "file"_L1)});
}

} // namespace

QStringList problemsIn(const QJsonObject &status)
{
    QStringList problems;
    for (const QJsonValue problem : status["problems"_L1].toArray()) {
        problems.append(printable(problem.toString()));
    }
    return problems;
}

QString statusText(const QJsonObject &status, const Terminal &terminal)
{
    const QJsonValue gateway = status["gateway"_L1];
    const QJsonValue tailscale = status["tailscale"_L1];
    QString text =
        line(u"Gateway"_s, {light(gateway["light"_L1], terminal), told(gateway, "name"_L1),
                            told(gateway, "url"_L1), u"token "_s + told(gateway, "token"_L1),
                            light(gateway["lock"_L1], terminal)}) +
        line(u"Tailscale"_s,
             {told(tailscale, "problem"_L1), told(tailscale, "url"_L1), told(tailscale, "ip"_L1)});
    if (status.contains("voice"_L1)) {
        text += voiceLine(status["voice"_L1], terminal) +
                serverLine(status["statusServer"_L1], terminal);
    }
    for (const QJsonValue document : status["documents"_L1].toArray()) {
        text += documentLine(document);
    }
    const QString secrets = printable(status["secrets"_L1].toString());
    text += line(u"Secrets"_s, {secrets.isEmpty() ? u"not known where"_s : u"in "_s + secrets});
    for (const QString &problem : problemsIn(status)) {
        text +=
            terminal.colored(u"Wrong"_s.leftJustified(subjectColumns) + problem, u"red"_s) + u'\n';
    }
    return text;
}

} // namespace ostrelle
