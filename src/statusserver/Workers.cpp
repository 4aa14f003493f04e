#include "statusserver/Workers.h"

#include "statusserver/RunLoop.h"

#include <asio/post.hpp>

namespace ostrelle
{

Workers::Workers(std::size_t threads)
    : m_maxThreads(threads)
{
}

void Workers::post(Task task)
{
    ensureThread();
    asio::post(m_queue->tasks, [task = std::move(task), queue = m_queue.get()]() mutable {
        task(queue->stop.get_token());
    });
}

// One more thread, unless there are enough. The first one is needed, the others only help.
void Workers::ensureThread()
{
    const std::scoped_lock lock(m_mutex);
    if (m_threads.size() >= m_maxThreads || m_queue->tasks.stopped()) {
        return;
    }
    try {
        m_threads.emplace_back([queue = m_queue] { runUntilStopped(queue->tasks); });
    } catch (const std::exception &) {
        if (m_threads.empty()) {
            throw;
        }
    }
}

void Workers::finishUntil(std::chrono::steady_clock::time_point deadline)
{
    m_queue->stop.request_stop();
    m_queue->tasks.stop();
    const std::scoped_lock lock(m_mutex);
    for (AbandonableThread &thread : m_threads) {
        thread.finishUntil(deadline);
    }
}

} // namespace ostrelle
