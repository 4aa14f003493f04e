#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <thread>

namespace ostrelle
{

// A thread that is waited for only so long. One that hangs in a system call is left to itself, so
// its work must share the ownership of whatever it touches.
class AbandonableThread
{
public:
    explicit AbandonableThread(std::move_only_function<void()> work);
    AbandonableThread(AbandonableThread &&) = default;
    AbandonableThread &operator=(AbandonableThread &&) = delete;
    AbandonableThread(const AbandonableThread &) = delete;
    AbandonableThread &operator=(const AbandonableThread &) = delete;
    ~AbandonableThread();

    // False when it is left to itself.
    bool finishUntil(std::chrono::steady_clock::time_point deadline);

private:
    std::future<void> m_finished;
    std::thread m_thread;
};

} // namespace ostrelle
