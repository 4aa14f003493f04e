#include "core/BackgroundWork.h"

#include "platform/NeverDestroyed.h"

#include <QDeadlineTimer>

#include <cstdlib>

namespace ostrelle
{

namespace
{

constexpr int threadsPerPool = 64;

// A pool that is never destroyed, because its destructor would wait for tasks that hang. When a
// library ends the program with exit(), running tasks get a moment to finish.
template<QThread::Priority priority>
class Pool : public QThreadPool
{
public:
    Pool()
    {
        setMaxThreadCount(threadsPerPool);
        setThreadPriority(priority);
        std::atexit([] { finishBackgroundWork(std::chrono::milliseconds(350)); });
    }
};

} // namespace

QThreadPool &utilityPool()
{
    static NeverDestroyed<Pool<QThread::LowPriority>> pool;
    return pool.object();
}

QThreadPool &userInitiatedPool()
{
    static NeverDestroyed<Pool<QThread::NormalPriority>> pool;
    return pool.object();
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
