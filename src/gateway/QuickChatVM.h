#pragma once

#include "core/HttpClient.h"
#include "gateway/ChatMessages.h"
#include "settings/Tokens.h"

#include <QProperty>

namespace ostrelle
{

// A one-line chat with the gateway: one question at a time, without the conversation's history.
// Every failure is shown as the assistant's message. Main thread only.
class QuickChatVM : public QObject
{
    Q_OBJECT
    Q_PROPERTY(ostrelle::ChatMessages *messages READ messages CONSTANT)
    Q_PROPERTY(QString input READ input WRITE setInput NOTIFY inputChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)

public:
    // The deadline is that of a whole exchange with the gateway.
    explicit QuickChatVM(std::shared_ptr<const Tokens> tokens,
                         std::chrono::milliseconds deadline = std::chrono::seconds(120),
                         QObject *parent = nullptr);

    // Sends the input to the gateway at that base URL. Nothing when the input is blank or while an
    // answer is awaited.
    Q_INVOKABLE void send(const QString &gatewayURL);

    ChatMessages *messages() { return &m_messages; }

    QString input() const { return m_input; }
    void setInput(const QString &input) { m_input = input; }

    bool isLoading() const { return m_isLoading; }

    // The last message says why there is no reply.
    bool hasFailed() const { return m_hasFailed; }

Q_SIGNALS:
    void inputChanged();
    void isLoadingChanged();

private:
    void sendToGateway(const QString &message, const QString &gatewayURL);
    void post(const QUrl &url, const QString &token, const QString &message);
    // The reply, or what is shown instead.
    using Reply = std::expected<QString, QString>;
    static Reply replyFrom(const HttpResult &result);
    void finish(const Reply &reply);

    const std::shared_ptr<const Tokens> m_tokens;
    const std::chrono::milliseconds m_deadline;
    ChatMessages m_messages;
    HttpClient m_http;
    bool m_hasFailed = false;

    Q_OBJECT_BINDABLE_PROPERTY(QuickChatVM, QString, m_input, &QuickChatVM::inputChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(QuickChatVM, bool, m_isLoading, false,
                                         &QuickChatVM::isLoadingChanged)
};

} // namespace ostrelle
