#include "platform/WorkPool.h"

#include "platform/Log.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <iterator>
#include <mutex>
#include <thread>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr std::chrono::seconds idleTime(30);
constexpr std::chrono::seconds untilNextTry(1);

} // namespace

// Its functions are called with the mutex locked.
struct WorkPool::State {
    explicit State(std::size_t most)
        : mostThreads(most)
    {
    }

    bool canBegin() const { return !isHeld && !waiting.empty(); }
    bool isDone() const { return waiting.empty() && idle == threads; }
    bool needsThread() const { return !isHeld && idle < waiting.size() && threads < mostThreads; }

    // What a thread of the pool does; `lock` is that of the mutex.
    void run(std::unique_lock<std::mutex> lock)
    {
        while (waitForWork(lock)) {
            Work work = std::move(waiting.front());
            waiting.pop_front();
            --idle;
            lock.unlock();
            work();
            work = nullptr; // lets go of what it shares before it counts as done
            lock.lock();
            ++idle;
            if (isDone()) {
                toldShortage = false;
                done.notify_all();
            }
        }
        --idle;
        --threads;
    }

    // False when the thread is not needed any more.
    bool waitForWork(std::unique_lock<std::mutex> &lock)
    {
        while (!canBegin()) {
            if (isOver) {
                return false;
            }
            if (threads == 1) {
                changed.wait(lock);
            } else if (changed.wait_for(lock, idleTime) == std::cv_status::timeout && !canBegin() &&
                       threads > 1) {
                return false;
            }
        }
        return true;
    }

    const std::size_t mostThreads;
    std::mutex mutex;
    std::condition_variable changed; // there is work to begin, or the pool is over
    std::condition_variable done;
    // protected by the mutex
    std::deque<Work> waiting;
    std::size_t threads = 0;
    std::size_t idle = 0; // of the threads; one that has just been started counts
    bool isHeld = false;
    bool isOver = false;
    bool isTryPlanned = false;
    bool toldShortage = false;
};

WorkPool::WorkPool(std::size_t mostThreads)
    : m_state(std::make_shared<State>(mostThreads))
{
}

WorkPool::~WorkPool()
{
    clear();
    const std::scoped_lock lock(m_state->mutex);
    m_state->isOver = true;
    m_state->changed.notify_all();
}

void WorkPool::start(Work work)
{
    const std::scoped_lock lock(m_state->mutex);
    m_state->waiting.push_back(std::move(work));
    ensureThreads(m_state);
    m_state->changed.notify_one();
}

void WorkPool::hold()
{
    const std::scoped_lock lock(m_state->mutex);
    m_state->isHeld = true;
}

void WorkPool::release()
{
    const std::scoped_lock lock(m_state->mutex);
    m_state->isHeld = false;
    ensureThreads(m_state);
    m_state->changed.notify_all();
}

void WorkPool::clear()
{
    std::deque<Work> dropped; // destroyed without the mutex, and with it what the work holds
    const std::scoped_lock lock(m_state->mutex);
    const std::size_t kept = m_state->isHeld ? 0 : std::min(m_state->idle, m_state->waiting.size());
    const auto begin = m_state->waiting.begin() + static_cast<std::ptrdiff_t>(kept);
    std::ranges::move(begin, m_state->waiting.end(), std::back_inserter(dropped));
    m_state->waiting.erase(begin, m_state->waiting.end());
    if (m_state->isDone()) {
        m_state->done.notify_all();
    }
}

void WorkPool::waitForDone()
{
    while (!waitForDone(std::chrono::hours(1))) {
    }
}

bool WorkPool::waitForDone(std::chrono::nanoseconds within)
{
    // The main thread may be waiting here, so that its timers do not run.
    constexpr std::chrono::milliseconds shortWait(20);
    const auto deadline = std::chrono::steady_clock::now() + within;
    std::unique_lock lock(m_state->mutex);
    while (!m_state->isDone() && std::chrono::steady_clock::now() < deadline) {
        while (m_state->needsThread() && startThread(m_state)) {
        }
        const auto until = m_state->needsThread()
                               ? std::min(deadline, std::chrono::steady_clock::now() + shortWait)
                               : deadline;
        m_state->done.wait_until(lock, until, [this] { return m_state->isDone(); });
    }
    return m_state->isDone();
}

// With the mutex locked, like the two below.
void WorkPool::ensureThreads(const std::shared_ptr<State> &state)
{
    while (state->needsThread()) {
        if (!startThread(state)) {
            tryAgainLater(state);
            return;
        }
    }
}

bool WorkPool::startThread(const std::shared_ptr<State> &state)
{
    try {
        std::thread([state] { state->run(std::unique_lock(state->mutex)); }).detach();
    } catch (const std::exception &) {
        if (!std::exchange(state->toldShortage, true)) {
            logLine(u"[Ostrelle] The system has no thread to spare; work waits for one"_s);
        }
        return false;
    }
    ++state->threads;
    ++state->idle;
    return true;
}

// There is a timer on the main thread only.
void WorkPool::tryAgainLater(const std::shared_ptr<State> &state)
{
    QCoreApplication *const application = QCoreApplication::instance();
    if (application == nullptr || std::exchange(state->isTryPlanned, true)) {
        return;
    }
    const auto again = [state] {
        const std::scoped_lock lock(state->mutex);
        state->isTryPlanned = false;
        ensureThreads(state);
    };
    QMetaObject::invokeMethod(application, [application, again] {
        QTimer::singleShot(untilNextTry, application, again);
    });
}

} // namespace ostrelle
