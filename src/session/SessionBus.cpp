#include "session/SessionBus.h"

#include "platform/NeverDestroyed.h"

#include <atomic>
#include <cstdlib>
#include <latch>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace ostrelle
{

namespace
{

// GLib would start a bus of its own where the session has none, so this is asked first.
bool sessionHasBus()
{
    if (const char *address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address) {
        return true;
    }
    const char *runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime && ::access((std::string(runtime) + "/bus").c_str(), F_OK) == 0;
}

// GLib ends the whole program when it cannot have one of the threads that it starts for its first
// connection: for tasks, for what starts those, for timers, for the bus. So they are tried first,
// and some more, since others may want one at the same time.
bool hasThreadsForConnection()
{
    constexpr std::size_t wanted = 8;
    std::latch tried(1);
    std::vector<std::jthread> threads;
    bool areThere = true;
    try {
        while (threads.size() < wanted) {
            threads.emplace_back([&tried] { tried.wait(); });
        }
    } catch (const std::system_error &) {
        areThere = false;
    }
    tried.count_down();
    return areThere;
}

// Contexts that nobody uses now. They are used again, because what a service says later, when it
// ends for instance, is delivered to the context in which it was found, and keeps that, with its
// descriptor, until somebody takes it.
class IdleContexts
{
public:
    static GMainContext *take()
    {
        auto &[mutex, contexts] = instance();
        const std::scoped_lock lock(mutex);
        if (contexts.empty()) {
            return g_main_context_new();
        }
        GMainContext *const context = contexts.back();
        contexts.pop_back();
        return context;
    }

    static void giveBack(GMainContext *context)
    {
        auto &[mutex, contexts] = instance();
        const std::scoped_lock lock(mutex);
        contexts.push_back(context);
    }

    // What waits in them: that a connection has ended, for instance, which is held until then.
    static void deliver()
    {
        auto &[mutex, contexts] = instance();
        const std::scoped_lock lock(mutex);
        for (GMainContext *const context : contexts) {
            while (g_main_context_iteration(context, FALSE)) {
            }
        }
    }

private:
    struct Content {
        std::mutex mutex;
        std::vector<GMainContext *> contexts; // protected by it
    };

    static Content &instance()
    {
        static NeverDestroyed<Content> content;
        return content.object();
    }
};

} // namespace

std::expected<GObjectPtr<GDBusConnection>, BusProblem> sessionBus()
{
    static std::atomic<bool> wasConnected = false; // GLib keeps its threads from then on
    if (!sessionHasBus() || (!wasConnected && !hasThreadsForConnection())) {
        return std::unexpected(BusProblem::Missing);
    }
    BoundedCalls calls;
    const auto result = calls.finish([&](GAsyncReadyCallback callback, gpointer data) {
        g_bus_get(G_BUS_TYPE_SESSION, calls.cancellable(), callback, data);
    });
    GObjectPtr<GDBusConnection> connection(g_bus_get_finish(result.get(), nullptr));
    if (!connection) {
        const bool waited = g_cancellable_is_cancelled(calls.cancellable()) != 0;
        return std::unexpected(waited ? BusProblem::NoAnswer : BusProblem::Missing);
    }
    wasConnected = true;
    if (g_dbus_connection_is_closed(connection.get())) {
        // Nobody gets another one as long as somebody holds this.
        IdleContexts::deliver();
        return std::unexpected(BusProblem::Missing);
    }
    // By default GLib ends the whole process together with the bus.
    g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
    return connection;
}

BoundedCalls::BoundedCalls(std::chrono::milliseconds deadline)
    : m_context(IdleContexts::take())
    , m_cancellable(g_cancellable_new())
    , m_deadline(g_timeout_source_new(static_cast<guint>(deadline.count())))
{
    g_main_context_push_thread_default(m_context);
    g_source_set_callback(m_deadline.get(), &BoundedCalls::cancel, this, nullptr);
    g_source_attach(m_deadline.get(), m_context);
}

BoundedCalls::~BoundedCalls()
{
    m_deadline.reset();
    // A cancelled call still delivers a result, which must not come to the next user.
    while (g_main_context_iteration(m_context, FALSE)) {
    }
    g_main_context_pop_thread_default(m_context);
    IdleContexts::giveBack(m_context);
}

void BoundedCalls::keepResult(GObject * /*source*/, GAsyncResult *result, gpointer self)
{
    static_cast<BoundedCalls *>(self)->m_result.reset(G_ASYNC_RESULT(g_object_ref(result)));
}

gboolean BoundedCalls::cancel(gpointer self)
{
    g_cancellable_cancel(static_cast<BoundedCalls *>(self)->cancellable());
    return G_SOURCE_CONTINUE;
}

void BoundedCalls::waitForResult()
{
    while (!m_result) {
        g_main_context_iteration(m_context, TRUE);
    }
}

} // namespace ostrelle
