#pragma once

#include "platform/WorkPool.h"

#include <atomic>
#include <chrono>
#include <memory>

namespace ostrelle
{

// Where work that may block runs. Each pool has up to 64 threads, so that a few hung tools do not
// hold up everything else.
WorkPool &utilityPool();       // polls and housekeeping
WorkPool &userInitiatedPool(); // what the user waits for

// While this object lives, both pools accept work but start none of it; what already runs goes on.
// At most one object at a time. Main thread only.
class BackgroundHold
{
public:
    BackgroundHold();
    ~BackgroundHold();
    BackgroundHold(const BackgroundHold &) = delete;
    BackgroundHold &operator=(const BackgroundHold &) = delete;
};

// Waits for both pools; false when the time was not enough. What no thread has time for yet is
// dropped.
bool finishBackgroundWork(std::chrono::milliseconds within);

// Limits how many passes of one kind run at once. Polls may overlap, but when a tool hangs, ticks
// beyond the limit are dropped. Any thread.
class PassLimit
{
public:
    // The pass counts as running while a copy of this exists. Null when too many are running.
    using Pass = std::shared_ptr<const void>;

    explicit PassLimit(int limit)
        : m_limit(limit)
    {
    }

    Pass begin();

private:
    const int m_limit;
    // Shared with the passes, which may outlive the object that counts them.
    const std::shared_ptr<std::atomic<int>> m_running = std::make_shared<std::atomic<int>>(0);
};

} // namespace ostrelle
