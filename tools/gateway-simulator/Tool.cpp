#include "Tool.h"

#include "CronJobs.h"
#include "GatewayFiles.h"
#include "Sessions.h"
#include "ToolModes.h"

#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <iostream>
#include <string>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;

namespace
{

Outcome outcomeOf(const Done &done, const QByteArray &output)
{
    return done ? Outcome{.output = output + '\n'}
                : Outcome{.status = 1, .output = {}, .errors = done.error().toUtf8() + '\n'};
}

Outcome misuse()
{
    return {.status = 2, .output = {}, .errors = usage()};
}

// The answer is JSON with or without --json.
Outcome show(const QString &name, const QJsonArray &list)
{
    const QJsonObject document = {{u"count"_s, list.size()}, {name, list}};
    return {.output = QJsonDocument(document).toJson()};
}

Outcome sessions(const World &world, const QStringList &arguments)
{
    const bool ofAll = arguments.contains(u"--all-agents"_s);
    const qsizetype active = arguments.indexOf(u"--active"_s);
    const qint64 withinMs =
        active < 0 ? world.nowMs : arguments.value(active + 1).toUShort() * qint64{60'000};
    QJsonArray listed;
    for (const QJsonValue session : listSessions(world)) {
        if (world.nowMs - session["updatedAt"_L1].toInteger() <= withinMs &&
            (ofAll || session["agentId"_L1] == "main"_L1)) {
            listed.append(session);
        }
    }
    return show(u"sessions"_s, listed);
}

Outcome cronList(const World &world, const QStringList &arguments)
{
    const bool ofAll = arguments.contains(u"--all"_s);
    QJsonArray listed;
    for (const QJsonValue job : listCronJobs(world)) {
        if (ofAll || job["enabled"_L1].toBool()) {
            listed.append(job);
        }
    }
    return show(u"jobs"_s, listed);
}

Outcome cronRun(const World &world, const QStringList &arguments)
{
    return outcomeOf(runCronJob(world, arguments[0]), R"({"ok":true,"ran":true})");
}

Outcome cronRemove(const World &world, const QStringList &arguments)
{
    return outcomeOf(removeCronJob(world, arguments[0]), R"({"ok":true,"removed":true})");
}

Outcome configGet(const World & /*world*/, const QStringList &arguments)
{
    const auto value = configValue(arguments[0]);
    if (!value || value->isUndefined()) {
        return outcomeOf(std::unexpected(value ? u"Config path not found"_s : value.error()), {});
    }
    if (value->isString()) {
        return {.output = value->toString().toUtf8() + '\n'};
    }
    // Only lists and objects make a document; any value is one in a list, less the brackets.
    const QByteArray list = QJsonDocument(QJsonArray{*value}).toJson(QJsonDocument::Compact);
    return {.output = list.sliced(1).chopped(1) + '\n'};
}

// A value is JSON where it can be read as such, and a text otherwise.
Outcome configSet(const World & /*world*/, const QStringList &arguments)
{
    const QJsonArray read = QJsonDocument::fromJson('[' + arguments[1].toUtf8() + ']').array();
    const QJsonValue value = read.size() == 1 ? read.first() : QJsonValue(arguments[1]);
    return outcomeOf(setConfigValue(arguments[0], value), "Updated " + arguments[0].toUtf8());
}

Outcome gatewayRestart(const World & /*world*/, const QStringList & /*arguments*/)
{
    return {.output = "The gateway reads its configuration afresh for each request.\n"};
}

Outcome tokenReset(const World & /*world*/, const QStringList & /*arguments*/)
{
    return outcomeOf(resetGatewayToken(), "The gateway has a new token.");
}

// Asks on the terminal; with nobody to answer the suggestion holds.
Outcome onboard(const World & /*world*/, const QStringList & /*arguments*/)
{
    std::cout << "Welcome to Duskrell. This is the simulated gateway: nothing is installed, and\n"
                 "nothing leaves this machine.\n\nWhat is your main agent called? [Main] "
              << std::flush;
    std::string line;
    std::getline(std::cin, line);
    const QString answer = QString::fromStdString(line).trimmed();
    const QString name = answer.isEmpty() ? u"Main"_s : answer;
    const Done made =
        updateObject(gatewayPath(u"agents/main/agent/agent.json"_s), [&](QJsonObject &agent) {
            agent[u"name"_s] = name;
            return Done();
        });
    return outcomeOf(made ? addMissingConfig(18789) : made,
                     "\n" + name.toUtf8() + " is ready, and the gateway has its token.\n" +
                         "Start the gateway with: duskrell serve");
}

Outcome help(const World & /*world*/, const QStringList & /*arguments*/)
{
    return {.output = usage()};
}

constexpr int options = -1;

struct Command {
    QLatin1StringView words;
    QLatin1StringView arguments; // as the usage shows them
    int argumentCount;           // or options, which the command reads itself
    Outcome (*run)(const World &, const QStringList &);
};

constexpr std::array commands = {
    Command{"sessions"_L1, "[--all-agents] [--active MINUTES] [--json]"_L1, options, &sessions},
    Command{"cron list"_L1, "[--all] [--json]"_L1, options, &cronList},
    Command{"cron run"_L1, "ID"_L1, 1, &cronRun},
    Command{"cron remove"_L1, "ID"_L1, 1, &cronRemove},
    Command{"config get"_L1, "KEY"_L1, 1, &configGet},
    Command{"config set"_L1, "KEY VALUE"_L1, 2, &configSet},
    Command{"gateway restart"_L1, {}, 0, &gatewayRestart},
    Command{"gateway token --reset"_L1, {}, 0, &tokenReset},
    Command{"onboard"_L1, {}, 0, &onboard},
    Command{"--help"_L1, {}, 0, &help},
};

Outcome run(const World &world, const QStringList &arguments)
{
    for (const Command &command : commands) {
        const QStringList words = QString(command.words).split(u' ');
        const auto [word, argument] = std::ranges::mismatch(words, arguments);
        if (word != words.end()) {
            continue;
        }
        const QStringList rest(argument, arguments.end());
        const bool fits = command.argumentCount == options || command.argumentCount == rest.size();
        return fits ? command.run(world, rest) : misuse();
    }
    return misuse();
}

} // namespace

int runTool(const QStringList &arguments)
{
    const Settings settings = Settings::load();
    if (settings.record) {
        record({{u"tool"_s, QJsonArray::fromStringList(arguments)}});
    }
    return finishInMode(settings.toolMode, run(settings.world, arguments));
}

QByteArray usage()
{
    QByteArray text = "Usage: duskrell COMMAND\n\n"
                      "  serve [--port PORT] [--bind ADDRESS] [--with-projects]\n";
    for (const Command &command : commands) {
        const QString line = u"  %1 %2"_s.arg(command.words, command.arguments);
        text += line.trimmed().prepend("  "_L1).toUtf8() + '\n';
    }
    return text;
}

} // namespace ostrelle::simulator
