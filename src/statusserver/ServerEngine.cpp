#include "statusserver/ServerEngine.h"

#include "platform/Log.h"
#include "statusserver/Listener.h"
#include "statusserver/RunLoop.h"

#include <asio/post.hpp>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// A thread needs milliseconds to see that it shall end; one that takes longer hangs.
constexpr std::chrono::milliseconds patienceAtTheEnd{300};

} // namespace

ServerEngine::ServerEngine(const OstrelleConfig &config, std::shared_ptr<const Tokens> tokens,
                           const ServerLimits &limits)
    : m_port(config.ports.status)
    , m_site(config, std::move(tokens))
    , m_workers(limits.workerThreads)
    , m_open(asio::make_work_guard(m_loop))
    , m_clients(m_loop, m_site, limits, [this](Workers::Task task) { runSlowly(std::move(task)); })
    , m_acceptor(
          m_loop, m_state, [this](Descriptor client) { m_clients.handleClient(std::move(client)); },
          [this] { return m_clients.dropSilent(); })
{
}

void ServerEngine::start()
{
    if (!m_state.requestStart()) {
        return;
    }
    if (ensureThread()) {
        asio::post(m_loop, [this] { runServer(m_port); });
    } else {
        m_state.enterIdle();
    }
}

void ServerEngine::stop()
{
    if (const int serverSocket = m_state.stop(); serverSocket >= 0) {
        asio::post(m_loop, [this, serverSocket] { m_acceptor.close(serverSocket); });
    }
}

void ServerEngine::finish()
{
    stop();
    m_loop.stop();
    const auto deadline = std::chrono::steady_clock::now() + patienceAtTheEnd;
    m_workers.finishUntil(deadline);
    if (m_thread) {
        m_thread->finishUntil(deadline);
    }
}

bool ServerEngine::ensureThread()
{
    try {
        if (!m_thread) {
            m_thread.emplace([self = shared_from_this()] { runUntilStopped(self->m_loop); });
        }
    } catch (const std::exception &error) {
        logLine(u"[StatusServer] Failed to start: "_s + QString::fromUtf8(error.what()));
    }
    return m_thread.has_value();
}

void ServerEngine::runServer(qint64 port)
{
    if (!m_state.startRequested()) {
        return;
    }
    auto listener = listenOn(port);
    if (!listener) {
        m_state.enterIdle();
        logLine(listener.error());
        return;
    }
    if (!m_state.enterServing(listener->socket.get(), listener->port)) {
        return;
    }
    if (m_acceptor.open(listener->socket)) {
        logLine(u"[StatusServer] Listening on port %1"_s.arg(listener->port));
    } else {
        m_state.stop();
    }
}

// A waiting task must not keep the engine alive that keeps the task.
void ServerEngine::runSlowly(Workers::Task task)
{
    m_workers.post(
        [engine = weak_from_this(), task = std::move(task)](const std::stop_token &stop) mutable {
            if (const auto alive = engine.lock()) {
                task(stop);
            }
        });
}

} // namespace ostrelle
