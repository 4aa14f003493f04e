#include "core/BackgroundWork.h"

#include <QDeadlineTimer>

namespace ostrelle
{

namespace
{

constexpr int threadsPerPool = 64;

void prepare(QThreadPool &pool, QThread::Priority priority)
{
    pool.setMaxThreadCount(threadsPerPool);
    pool.setThreadPriority(priority);
}

} // namespace

QThreadPool &utilityPool()
{
    static QThreadPool pool;
    static const bool prepared = (prepare(pool, QThread::LowPriority), true);
    Q_UNUSED(prepared)
    return pool;
}

QThreadPool &userInitiatedPool()
{
    static QThreadPool pool;
    static const bool prepared = (prepare(pool, QThread::NormalPriority), true);
    Q_UNUSED(prepared)
    return pool;
}

BackgroundHold::BackgroundHold()
{
    for (QThreadPool *pool : {&utilityPool(), &userInitiatedPool()}) {
        pool->setMaxThreadCount(1);
        pool->start([over = m_over] { over->wait(); });
    }
}

BackgroundHold::~BackgroundHold()
{
    m_over->count_down();
    for (QThreadPool *pool : {&utilityPool(), &userInitiatedPool()}) {
        pool->setMaxThreadCount(threadsPerPool);
    }
}

bool finishBackgroundWork(std::chrono::milliseconds within)
{
    const QDeadlineTimer deadline(within);
    bool finished = true;
    for (QThreadPool *pool : {&utilityPool(), &userInitiatedPool()}) {
        pool->clear();
        finished = pool->waitForDone(static_cast<int>(deadline.remainingTime())) && finished;
    }
    return finished;
}

PassLimit::Pass PassLimit::begin()
{
    if (m_running->fetch_add(1) >= m_limit) {
        --*m_running;
        return nullptr;
    }
    return {m_running.get(), [running = m_running](const void *) { --*running; }};
}

} // namespace ostrelle
