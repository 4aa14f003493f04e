#include "statusserver/ServerEngine.h"

#include "platform/Log.h"
#include "statusserver/Listener.h"
#include "statusserver/RunLoop.h"

#include <algorithm>
#include <asio/post.hpp>
#include <sys/resource.h>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// A thread needs milliseconds to see that it shall end; one that takes longer hangs.
constexpr std::chrono::milliseconds patienceAtTheEnd{300};

// One a document; of each there is at most one read under way.
constexpr std::size_t documentThreads = 3;

int descriptorsForClients(const ServerLimits &limits)
{
    rlimit system{.rlim_cur = RLIM_INFINITY, .rlim_max = RLIM_INFINITY};
    ::getrlimit(RLIMIT_NOFILE, &system);
    return static_cast<int>(
        std::min<rlim_t>(static_cast<rlim_t>(limits.maxDescriptors), system.rlim_cur / 2));
}

} // namespace

ServerEngine::ServerEngine(const OstrelleConfig &config, std::shared_ptr<const Tokens> tokens,
                           const ServerLimits &limits)
    : m_port(config.ports.status)
    , m_limits(limits)
    , m_site(config, std::move(tokens))
    , m_documentReaders(documentThreads)
    , m_historyReaders(limits.historyThreads)
    , m_open(asio::make_work_guard(m_loop))
    , m_clients(
          m_loop, m_site, limits,
          {.readDocument = slowlyOn(m_documentReaders), .readHistory = slowlyOn(m_historyReaders)})
    , m_acceptor(
          m_loop, m_state, descriptorsForClients(limits),
          [this](Descriptor client) { m_clients.handleClient(std::move(client)); },
          [this] { return m_clients.dropOldest(); })
    , m_nextTry(m_loop)
{
}

bool ServerEngine::start()
{
    if (!ensureThread()) {
        return false;
    }
    if (const auto start = m_state.requestStart()) {
        asio::post(m_loop, [this, start = *start] { runServer(start, Try::First); });
    }
    return true;
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
    m_documentReaders.finishUntil(deadline);
    m_historyReaders.finishUntil(deadline);
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
        if (!std::exchange(m_toldNoThread, true)) {
            logLine(u"[StatusServer] Failed to start: "_s + QString::fromUtf8(error.what()));
        }
    }
    return m_thread.has_value();
}

// Not for a start that was stopped: what it would open, the stop of another one might close.
void ServerEngine::runServer(int start, Try which)
{
    if (!m_state.isUnderWay(start)) {
        return;
    }
    auto listener = listenOn(m_port);
    if (!listener) {
        const bool waits = m_state.enterIdle(start, listener.error().portTaken);
        if (which == Try::First) {
            logLine(listener.error().logLine);
        }
        if (waits) {
            tryAgainLater();
        }
        return;
    }
    if (!m_state.enterServing(start, listener->socket.get(), listener->port)) {
        return;
    }
    if (m_acceptor.open(listener->socket)) {
        logLine(u"[StatusServer] Listening on port %1"_s.arg(listener->port));
    } else {
        m_state.stop();
    }
}

void ServerEngine::tryAgainLater()
{
    m_nextTry.expires_after(m_limits.untilNextTry);
    m_nextTry.async_wait([this](const asio::error_code &error) {
        if (error || !m_state.portTaken()) {
            return;
        }
        if (const auto start = m_state.requestStart()) {
            runServer(*start, Try::Again);
        }
    });
}

// A waiting task must not keep the engine alive that keeps the task.
ClientService::RunSlowly ServerEngine::slowlyOn(Workers &workers)
{
    return [this, &workers](Workers::Task task) {
        workers.post([engine = weak_from_this(),
                      task = std::move(task)](const std::stop_token &stop) mutable {
            if (const auto alive = engine.lock()) {
                task(stop);
            }
        });
    };
}

} // namespace ostrelle
