#pragma once

#include <QFuture>
#include <QPromise>
#include <QThreadPool>

#include <memory>
#include <type_traits>

namespace ostrelle
{

// One piece of work after the other, in the order in which it was given. When the program quits, or
// a library ends it, what was given is still done, unless that takes longer than a sixth of a
// second for one of the queues. Any thread.

// Where the configuration, the preferences, the login item and the voice agent's PID are written.
QThreadPool &settingsQueue();

// Where tokens are stored and moved. Apart, because a keyring may take seconds.
QThreadPool &tokenQueue();

// Gives the queue a piece of work. Not by QtConcurrent::run(): whoever waits for the future of that
// takes work that has not begun out of the queue, and does it at once.
template<typename Work>
QFuture<std::invoke_result_t<Work>> inOrder(QThreadPool &queue, Work work)
{
    using Result = std::invoke_result_t<Work>;
    const auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    queue.start([promise, work = std::move(work)] {
        if constexpr (std::is_void_v<Result>) {
            work();
        } else {
            promise->addResult(work());
        }
        promise->finish();
    });
    return promise->future();
}

} // namespace ostrelle
