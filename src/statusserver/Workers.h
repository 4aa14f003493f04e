#pragma once

#include "platform/AbandonableThread.h"

#include <asio/io_context.hpp>
#include <memory>
#include <mutex>
#include <stop_token>
#include <vector>

namespace ostrelle
{

// A few threads for what may take long. They are started when there is work for them.
class Workers
{
public:
    using Task = std::move_only_function<void(const std::stop_token &)>;

    explicit Workers(std::size_t threads);

    // Runs the task on one of the threads, in the order of the calls. One thread at a time.
    // Throws, and forgets the task, when there is no thread and none can be started.
    void post(Task task);

    // Asks the tasks that run to stop, drops the others and waits for the threads until `deadline`;
    // a thread that hangs is abandoned. Any thread.
    void finishUntil(std::chrono::steady_clock::time_point deadline);

private:
    void ensureThread();

    // Shared with the threads, which may be abandoned.
    struct Queue {
        asio::io_context tasks;
        asio::executor_work_guard<asio::io_context::executor_type> open =
            asio::make_work_guard(tasks);
        std::stop_source stop;
    };

    const std::size_t m_maxThreads;
    const std::shared_ptr<Queue> m_queue = std::make_shared<Queue>();
    std::mutex m_mutex;
    std::vector<AbandonableThread> m_threads; // protected by m_mutex
};

} // namespace ostrelle
