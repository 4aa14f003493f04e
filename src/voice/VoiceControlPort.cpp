#include "voice/VoiceControlPort.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto requestTimeout = 60s;
constexpr int maxQuestions = 40;
constexpr int maxPosts = 16;
constexpr qsizetype maxWaitingActions = 8;
constexpr qsizetype maxBodyBytes = qsizetype{64} * 1024;

} // namespace

VoiceControlPort::VoiceControlPort(qint64 port, std::chrono::milliseconds longestTurn,
                                   QObject *parent)
    : QObject(parent)
    , m_controlURL(u"http://127.0.0.1:%1"_s.arg(port))
    , m_client(maxBodyBytes)
{
    m_turnTimer.setInterval(longestTurn);
    connect(&m_turnTimer, &QTimer::timeout, this, &VoiceControlPort::takeTurn);
}

void VoiceControlPort::askStatus()
{
    const auto url = endpoint(m_controlURL, u"/status"_s);
    if (!url) {
        QMetaObject::invokeMethod(
            this, [this] { Q_EMIT statusArrived(std::nullopt); }, Qt::QueuedConnection);
        return;
    }
    if (m_questions >= maxQuestions) {
        return;
    }
    ++m_questions;
    m_client.send({.url = *url, .deadline = requestTimeout},
                  [this](const HttpResult &result) { finishStatus(result); });
}

// An answer with whatever HTTP status is an answer.
void VoiceControlPort::finishStatus(const HttpResult &result)
{
    --m_questions;
    Q_EMIT statusArrived(result ? VoiceStatus::fromJson(result->body) : std::nullopt);
}

void VoiceControlPort::postAction(const QString &action)
{
    if (action == "start"_L1) {
        post(action, [] {});
    } else if (m_waiting.size() < maxWaitingActions) {
        m_waiting.enqueue(action);
        if (!m_turnTimer.isActive()) {
            takeTurn();
        }
    }
}

void VoiceControlPort::takeTurn()
{
    m_turnTimer.stop();
    if (m_waiting.isEmpty()) {
        return;
    }
    m_turnTimer.start();
    // An answer that comes after its turn is over must not end the turn of another action.
    post(m_waiting.dequeue(), [this, turn = ++m_turn] {
        if (turn == m_turn) {
            takeTurn();
        }
    });
}

void VoiceControlPort::post(const QString &action, const std::function<void()> &answered)
{
    const auto url = endpoint(m_controlURL, u'/' + action);
    if (!url || m_posts >= maxPosts) {
        return;
    }
    ++m_posts;
    m_client.send({.url = *url, .body = QByteArray(), .deadline = requestTimeout},
                  [this, answered](const HttpResult &) {
                      --m_posts;
                      answered();
                  });
}

} // namespace ostrelle

#include "moc_VoiceControlPort.cpp"
