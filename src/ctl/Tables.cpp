#include "ctl/Tables.h"

#include "ctl/Table.h"
#include "ctl/Told.h"

#include <QJsonArray>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

Cell plain(const QJsonValue &object, QLatin1StringView member)
{
    return {.text = told(object, member)};
}

Cell statusOf(const QJsonValue &object)
{
    return {.text = told(object, "status"_L1), .color = object["color"_L1].toString()};
}

QString percent(const QJsonValue &object)
{
    return QString::number(object["progress"_L1].toInteger()) + u'%';
}

QString joined(const QString &first, const QString &second)
{
    return first.isEmpty() || second.isEmpty() ? first + second : first + u" · "_s + second;
}

// A list with what the dashboard says above it: that it cannot be had, or when it was written.
QString withRemarks(const QJsonObject &data, const QString &table)
{
    const QString problem = printable(data["problem"_L1].toString());
    return problem.isEmpty() ? table : table + problem + u'\n';
}

} // namespace

QString agentsText(const QJsonObject &data, const Terminal &terminal)
{
    Table table({u"AGENT"_s, u"STATUS"_s, u"MODEL"_s, u"DETAIL"_s}, terminal);
    for (const QJsonValue agent : data["agents"_L1].toArray()) {
        Cell status = statusOf(agent);
        status.text = joined(status.text, told(agent, "progress"_L1));
        table.add({{.text = told(agent, "emoji"_L1) + u' ' + told(agent, "name"_L1)},
                   status,
                   plain(agent, "model"_L1),
                   plain(agent, "detail"_L1)});
    }
    return withRemarks(data, table.text());
}

QString projectsText(const QJsonObject &data, const Terminal &terminal)
{
    Table table({u"PROJECT"_s, u"STATUS"_s, u"DONE"_s, u"DETAIL"_s}, terminal);
    for (const QJsonValue project : data["projects"_L1].toArray()) {
        table.add({plain(project, "name"_L1),
                   statusOf(project),
                   {.text = percent(project)},
                   plain(project, "description"_L1)});
        for (const QJsonValue item : project["workstreams"_L1].toArray()) {
            table.add({{.text = u"  "_s + told(item, "name"_L1)},
                       statusOf(item),
                       {.text = percent(item)},
                       plain(item, "note"_L1)});
        }
    }
    return withRemarks(data, table.text());
}

QString cronText(const QJsonObject &data, const Terminal &terminal)
{
    Table table({u"JOB"_s, u"STATUS"_s, u"SCHEDULE"_s, u"LAST"_s, u"NEXT"_s}, terminal);
    for (const QJsonValue job : data["jobs"_L1].toArray()) {
        table.add({plain(job, "name"_L1), statusOf(job), plain(job, "schedule"_L1),
                   plain(job, "lastRun"_L1), plain(job, "nextRun"_L1)});
    }
    return withRemarks(data, table.text());
}

QString gatewaysText(const QJsonObject &data, const Terminal &terminal)
{
    Table table({u""_s, u"GATEWAY"_s, u"URL"_s, u"TOKEN"_s}, terminal);
    for (const QJsonValue gateway : data["gateways"_L1].toArray()) {
        const QJsonValue hasToken = gateway["hasToken"_L1];
        table.add({{.text = gateway["inUse"_L1].toBool() ? u"*"_s : u""_s, .color = u"green"_s},
                   plain(gateway, "name"_L1),
                   plain(gateway, "url"_L1),
                   {.text = hasToken.isBool() ? (hasToken.toBool() ? u"stored"_s : u"none"_s)
                                              : u"unknown"_s}});
    }
    return table.text();
}

QString devicesText(const QJsonObject &data, const Terminal &terminal)
{
    Table table({u"DEVICE"_s, u"URL"_s, u"IP"_s, u"GATEWAY"_s}, terminal);
    for (const QJsonValue device : data["devices"_L1].toArray()) {
        const bool answers = device["answers"_L1].toBool();
        table.add({plain(device, "name"_L1),
                   plain(device, "url"_L1),
                   plain(device, "ip"_L1),
                   {.text = answers ? u"answers"_s : u"none"_s,
                    .color = answers ? u"green"_s : u"yellow"_s}});
    }
    return withRemarks(data, table.text());
}

QString settingsText(const QJsonObject &data, const Terminal &terminal)
{
    Table table({u"SETTING"_s, u"STATE"_s}, terminal);
    for (const QJsonValue setting : data["settings"_L1].toArray()) {
        const bool isOn = setting["on"_L1].toBool();
        table.add({plain(setting, "name"_L1),
                   {.text = isOn ? u"on"_s : u"off"_s, .color = isOn ? u"green"_s : u"grey"_s}});
    }
    table.add({{.text = u"gemini-key"_s},
               {.text = data["hasGeminiKey"_L1].toBool() ? u"stored"_s : u"none"_s}});
    return table.text();
}

QString namesText(const QJsonObject &data, const Terminal & /*terminal*/)
{
    QString text;
    for (const QJsonValue list : data) {
        for (const QJsonValue row : list.toArray()) {
            text += told(row, "name"_L1) + u'\n';
        }
    }
    return text;
}

QString setupText(const QJsonObject &data, const Terminal &terminal)
{
    QString text;
    for (const QJsonValue check : data["checks"_L1].toArray()) {
        const bool ok = check["ok"_L1].toBool();
        text += terminal.colored(ok ? u"there    "_s : u"missing  "_s, ok ? u"green"_s : u"red"_s) +
                told(check, "label"_L1);
        if (const QString note = told(check, "note"_L1); !note.isEmpty()) {
            text += u", "_s + note;
        }
        text += u'\n';
        if (const QString advice = told(check, "advice"_L1); !advice.isEmpty()) {
            text += u"           "_s + advice + u'\n';
        }
        for (const QJsonValue command : check["commands"_L1].toArray()) {
            text += u"           "_s + printable(command.toString()) + u'\n';
        }
    }
    return text;
}

} // namespace ostrelle
