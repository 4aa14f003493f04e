#include "platform/AbandonableThread.h"

namespace ostrelle
{

AbandonableThread::AbandonableThread(std::move_only_function<void()> work)
{
    std::promise<void> done;
    m_finished = done.get_future();
    m_thread = std::thread([work = std::move(work), done = std::move(done)]() mutable {
        work();
        work = nullptr; // lets go of what it shares before anybody counts on that
        done.set_value();
    });
}

AbandonableThread::~AbandonableThread()
{
    if (m_thread.joinable()) {
        m_thread.detach();
    }
}

bool AbandonableThread::finishUntil(std::chrono::steady_clock::time_point deadline)
{
    if (m_finished.wait_until(deadline) != std::future_status::ready) {
        return false;
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    return true;
}

} // namespace ostrelle
