#pragma once

#include "platform/AbandonableThread.h"
#include "settings/OstrelleConfig.h"
#include "statusserver/Acceptor.h"
#include "statusserver/ClientService.h"
#include "statusserver/ServerLimits.h"
#include "statusserver/ServerState.h"
#include "statusserver/Site.h"
#include "statusserver/Workers.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <memory>
#include <optional>

namespace ostrelle
{

// The server's threads and what they share: one thread for all sockets, a few for what may wait.
// Every thread holds on to the engine, so one that hangs can be left behind.
class ServerEngine : public std::enable_shared_from_this<ServerEngine>
{
public:
    ServerEngine(const OstrelleConfig &config, std::shared_ptr<const Tokens> tokens,
                 const ServerLimits &limits);

    ServerState &state() { return m_state; }

    // Starts to listen, on the I/O thread. False when there is no thread for that. Main thread
    // only, like the two below.
    bool start();

    // Refuses connections from now on; those that are there are served to their end.
    void stop();

    // Drops everything and waits for the threads, but not for long.
    void finish();

private:
    // False, and logged, when the I/O thread cannot be started.
    bool ensureThread();
    enum class Try { First, Again };
    void runServer(int start, Try which);
    void tryAgainLater();
    ClientService::RunSlowly slowlyOn(Workers &workers);

    // never changes
    const qint64 m_port;
    const ServerLimits m_limits;
    const Site m_site;
    // guards itself
    ServerState m_state;
    Workers m_documentReaders;
    Workers m_historyReaders;
    asio::io_context m_loop{1};
    // I/O thread only
    asio::executor_work_guard<asio::io_context::executor_type> m_open;
    ClientService m_clients;
    Acceptor m_acceptor;
    asio::steady_timer m_nextTry;
    // main thread only
    std::optional<AbandonableThread> m_thread;
    bool m_toldNoThread = false;
};

} // namespace ostrelle
