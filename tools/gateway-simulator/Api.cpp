#include "Api.h"

#include "CronJobs.h"
#include "GatewayFiles.h"
#include "SessionLog.h"
#include "Sessions.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;

namespace
{

QString aboutJobs(const World &world)
{
    const QJsonArray jobs = listCronJobs(world);
    const auto failed = std::ranges::count_if(
        jobs, [](const QJsonValue &job) { return job["state"_L1]["lastStatus"_L1] == "error"_L1; });
    return u"%1 jobs are set up; the last run of %2 of them failed."_s.arg(jobs.size()).arg(failed);
}

QString aboutAgents(const World &world)
{
    QStringList agents;
    for (const QJsonValue session : listSessions(world)) {
        if (session["updatedAt"_L1] == world.nowMs) {
            agents.append(session["agentId"_L1].toString());
        }
    }
    agents.removeDuplicates();
    return u"Active right now: %1."_s.arg(agents.join(u", "_s));
}

QString aboutTime(const World &world)
{
    const auto now = QDateTime::fromMSecsSinceEpoch(world.nowMs);
    return u"It is %1 here."_s.arg(now.toString(u"HH:mm"_s));
}

QString replyTo(const World &world, const QString &question)
{
    struct Topic {
        QStringView words;
        QString (*reply)(const World &);
    };
    constexpr std::array topics = {Topic{u"jobs?|cron|schedule", &aboutJobs},
                                   Topic{u"agents?|sessions?|active|busy", &aboutAgents},
                                   Topic{u"time|clock|late", &aboutTime}};
    for (const Topic &topic : topics) {
        const QRegularExpression words(u"\\b(%1)\\b"_s.arg(topic.words),
                                       QRegularExpression::CaseInsensitiveOption);
        if (words.match(question).hasMatch()) {
            return topic.reply(world);
        }
    }
    // A chat widget marks its messages with a speech balloon.
    return u"You said “%1”. I am only the simulated gateway: ask me about agents, jobs or the time."_s
        .arg(QString(question).remove(u"💬"_s).trimmed().left(120));
}

QString lastQuestion(const QJsonArray &messages)
{
    QString question;
    for (const QJsonValue message : messages) {
        if (message["role"_L1] == "user"_L1) {
            const QJsonValue content = message["content"_L1];
            question = content.isArray() ? content[0]["text"_L1].toString() : content.toString();
        }
    }
    return question.trimmed();
}

QJsonObject completion(const World &world, const QString &text)
{
    const QJsonObject message = {{u"role"_s, u"assistant"_s}, {u"content"_s, text}};
    const QJsonObject choice = {
        {u"index"_s, 0}, {u"message"_s, message}, {u"finish_reason"_s, u"stop"_s}};
    return {{u"id"_s, u"chatcmpl-"_s + world.identity(text + QString::number(world.nowMs))},
            {u"object"_s, u"chat.completion"_s},
            {u"created"_s, world.nowMs / 1000},
            {u"model"_s, u"duskrell"_s},
            {u"choices"_s, QJsonArray{choice}}};
}

Reply health(const World & /*world*/, const Request & /*request*/)
{
    return Reply::json({{u"ok"_s, true}, {u"status"_s, u"live"_s}});
}

Reply models(const World & /*world*/, const Request & /*request*/)
{
    const QJsonObject model = {{u"id"_s, u"duskrell"_s}, {u"object"_s, u"model"_s}};
    return Reply::json({{u"object"_s, u"list"_s}, {u"data"_s, QJsonArray{model}}});
}

Reply chat(const World &world, const Request &request)
{
    const auto enabled = configValue(u"gateway.http.endpoints.chatCompletions.enabled"_s);
    if (!enabled || *enabled == false) {
        return Reply::error(404, u"The chat-completions endpoint is switched off"_s);
    }
    const QJsonObject body = QJsonDocument::fromJson(request.body).object();
    const QString question = lastQuestion(body["messages"_L1].toArray());
    if (question.isEmpty() || body["stream"_L1].toBool()) {
        return Reply::error(400, u"Needed: messages with one of the user, and no stream"_s);
    }
    const QString reply = replyTo(world, question);
    sessionlog::appendExchange(world, question, reply);
    return Reply::json(completion(world, reply));
}

bool showsToken(const Request &request)
{
    const QByteArray token = gatewayToken().toUtf8();
    return !token.isEmpty() && request.header("authorization") == "Bearer " + token;
}

} // namespace

Reply answer(const World &world, const Request &request)
{
    struct Endpoint {
        QByteArrayView path;
        QByteArrayView method;
        bool needsToken;
        Reply (*reply)(const World &, const Request &);
    };
    constexpr std::array endpoints = {Endpoint{"/health", "GET", false, &health},
                                      Endpoint{"/v1/models", "GET", true, &models},
                                      Endpoint{"/v1/chat/completions", "POST", true, &chat}};
    for (const Endpoint &endpoint : endpoints) {
        if (request.path != endpoint.path) {
            continue;
        }
        if (request.method != endpoint.method) {
            return Reply::error(405, u"Use another method"_s);
        }
        if (endpoint.needsToken && !showsToken(request)) {
            return Reply::error(401, u"Wrong or missing token"_s);
        }
        return endpoint.reply(world, request);
    }
    return Reply::error(404, u"No such endpoint"_s);
}

} // namespace ostrelle::simulator
