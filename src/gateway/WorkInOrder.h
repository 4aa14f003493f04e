#pragma once

#include "core/BackgroundWork.h"

#include <QFuture>
#include <QPromise>

#include <functional>

namespace ostrelle
{

// Runs pieces of background work one after the other, in the order in which they were given, also
// when this object is gone meanwhile. For writes of which the last one must win. Main thread only.
class WorkInOrder
{
public:
    // The future is finished when this piece of work is.
    QFuture<void> run(const std::function<void()> &work)
    {
        const auto promise = std::make_shared<QPromise<void>>();
        promise->start();
        // A future takes one continuation only, so that the caller gets one of its own.
        m_last = m_last.then(&userInitiatedPool(), [work, promise] {
            work();
            promise->finish();
        });
        return promise->future();
    }

private:
    QFuture<void> m_last = QtFuture::makeReadyFuture();
};

} // namespace ostrelle
