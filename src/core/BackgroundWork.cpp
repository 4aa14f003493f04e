#include "core/BackgroundWork.h"

#include "platform/NeverDestroyed.h"

#include <cstdlib>

namespace ostrelle
{

namespace
{

constexpr std::size_t threadsPerPool = 64;

// When a library ends the program with exit(), running tasks get a moment to finish.
class Pool : public WorkPool
{
public:
    Pool()
        : WorkPool(threadsPerPool)
    {
        std::atexit([] { finishBackgroundWork(std::chrono::milliseconds(350)); });
    }
};

} // namespace

WorkPool &utilityPool()
{
    static NeverDestroyed<Pool> pool;
    return pool.object();
}

WorkPool &userInitiatedPool()
{
    static NeverDestroyed<Pool> pool;
    return pool.object();
}

BackgroundHold::BackgroundHold()
{
    utilityPool().hold();
    userInitiatedPool().hold();
}

BackgroundHold::~BackgroundHold()
{
    utilityPool().release();
    userInitiatedPool().release();
}

bool finishBackgroundWork(std::chrono::milliseconds within)
{
    const auto deadline = std::chrono::steady_clock::now() + within;
    bool finished = true;
    for (WorkPool *pool : {&utilityPool(), &userInitiatedPool()}) {
        pool->clear();
        finished = pool->waitForDone(deadline - std::chrono::steady_clock::now()) && finished;
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
