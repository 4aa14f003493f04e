#include "gateway/QuickChatVM.h"

#include "core/BackgroundWork.h"
#include "core/WhenDone.h"
#include "gateway/ChatReply.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString systemPrompt =
    u"Reply concisely — 1-3 sentences max. You're responding in a tiny chat widget."_s;
constexpr int maxReplyTokens = 200;

QByteArray requestBody(const QString &message)
{
    const QJsonObject system{{"role"_L1, u"system"_s}, {"content"_L1, systemPrompt}};
    const QJsonObject user{{"role"_L1, u"user"_s}, {"content"_L1, QString(u"💬 "_s + message)}};
    const QJsonObject body{{"model"_L1, u"duskrell"_s},
                           {"messages"_L1, QJsonArray{system, user}},
                           {"stream"_L1, false},
                           {"max_tokens"_L1, maxReplyTokens}};
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

} // namespace

QuickChatVM::QuickChatVM(std::shared_ptr<const Tokens> tokens, std::chrono::milliseconds deadline,
                         QObject *parent)
    : QObject(parent)
    , m_tokens(std::move(tokens))
    , m_deadline(deadline)
{
}

void QuickChatVM::send(const QString &gatewayURL)
{
    const QString message = input().trimmed();
    if (message.isEmpty() || m_isLoading) {
        return;
    }
    m_input = QString();
    m_messages.append({.role = u"user"_s, .text = message});
    m_isLoading = true;
    sendToGateway(message, gatewayURL);
}

void QuickChatVM::sendToGateway(const QString &message, const QString &gatewayURL)
{
    const auto url = endpoint(gatewayURL, u"/v1/chat/completions"_s);
    if (!url) {
        finish(std::unexpected(u"Invalid gateway URL"_s));
        return;
    }
    const auto look = [tokens = m_tokens, gatewayURL] { return tokens->tokenFor(gatewayURL); };
    whenDone(userInitiatedPool().run(look), this,
             [this, url, message](const QString &token) { post(*url, token, message); });
}

void QuickChatVM::post(const QUrl &url, const QString &token, const QString &message)
{
    m_http.send({.url = url,
                 .headers = {{"Authorization", bearer(token)},
                             {"Content-Type", "application/json"},
                             {"x-duskrell-session-key", "agent:main:main"},
                             {"x-duskrell-channel", "ostrelle"}},
                 .body = requestBody(message),
                 .deadline = m_deadline},
                [this](const HttpResult &result) { finish(replyFrom(result)); });
}

QuickChatVM::Reply QuickChatVM::replyFrom(const HttpResult &result)
{
    if (!result) {
        return std::unexpected(u"Error: "_s + result.error());
    }
    if (!result->succeeded()) {
        return std::unexpected(u"Gateway error"_s);
    }
    if (!result->complete) {
        return std::unexpected(u"Error: The reply is too long."_s);
    }
    return chatReply(result->body);
}

void QuickChatVM::finish(const Reply &reply)
{
    m_hasFailed = !reply;
    m_messages.append({.role = u"assistant"_s, .text = reply ? *reply : reply.error()});
    m_isLoading = false;
}

} // namespace ostrelle

#include "moc_QuickChatVM.cpp"
