#include "voice/VoiceControlPort.h"

#include <QNetworkProxy>
#include <QNetworkReply>
#include <QTimer>

namespace ostrelle
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto requestTimeout = 60s;
constexpr int maxQuestions = 4;
constexpr qsizetype maxWaitingCommands = 8;
constexpr qint64 maxBodyBytes = qint64{64} * 1024;

QNetworkRequest requestFor(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    return request;
}

// An answer with an HTTP error status is still an answer.
bool transportFailed(QNetworkReply::NetworkError error)
{
    const bool answered =
        error == QNetworkReply::NoError ||
        (error > QNetworkReply::UnknownProxyError && error <= QNetworkReply::UnknownContentError) ||
        (error > QNetworkReply::ProtocolFailure && error <= QNetworkReply::UnknownServerError);
    return !answered;
}

bool isFlood(const QNetworkReply &reply)
{
    return reply.bytesAvailable() > maxBodyBytes;
}

// A reply with an error is about to end by itself, and Qt complains about a second one.
void giveUpFlood(QNetworkReply &reply)
{
    if (isFlood(reply) && reply.error() == QNetworkReply::NoError) {
        reply.abort();
    }
}

} // namespace

VoiceControlPort::VoiceControlPort(qint64 port, QObject *parent)
    : QObject(parent)
    , m_controlURL(u"http://127.0.0.1:%1"_s.arg(port))
{
    m_network.setProxy(QNetworkProxy::NoProxy);
}

QUrl VoiceControlPort::url(const QString &word) const
{
    return QUrl(m_controlURL + u'/' + word, QUrl::StrictMode);
}

void VoiceControlPort::askStatus()
{
    const QUrl status = url(u"status"_s);
    if (!status.isValid() || m_questions >= maxQuestions) {
        return;
    }
    ++m_questions;
    QNetworkReply *reply = m_network.get(requestFor(status));
    bound(reply);
    connect(reply, &QNetworkReply::finished, this, [this, reply] { finishStatus(reply); });
}

void VoiceControlPort::finishStatus(QNetworkReply *reply)
{
    --m_questions;
    reply->deleteLater();
    const bool failed = transportFailed(reply->error()) || isFlood(*reply);
    Q_EMIT statusArrived(failed ? std::nullopt : VoiceStatus::fromJson(reply->readAll()));
}

void VoiceControlPort::send(const QString &command)
{
    if (url(command).isValid() && m_commands.size() < maxWaitingCommands) {
        m_commands.enqueue(command);
        sendNext();
    }
}

void VoiceControlPort::sendNext()
{
    if (m_sending || m_commands.isEmpty()) {
        return;
    }
    m_sending = true;
    QNetworkRequest request = requestFor(url(m_commands.dequeue()));
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    QNetworkReply *reply = m_network.post(request, QByteArray());
    bound(reply);
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        m_sending = false;
        sendNext();
    });
}

// A total limit: an agent that sends a byte now and then does not prolong it.
void VoiceControlPort::bound(QNetworkReply *reply)
{
    QTimer::singleShot(requestTimeout, reply, &QNetworkReply::abort);
    // Queued: an end in the middle of the reply's own report would be reported twice.
    connect(
        reply, &QNetworkReply::readyRead, reply, [reply] { giveUpFlood(*reply); },
        Qt::QueuedConnection);
}

} // namespace ostrelle
