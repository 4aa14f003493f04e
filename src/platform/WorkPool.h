#pragma once

#include <QFuture>
#include <QPromise>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <type_traits>

namespace ostrelle
{

// Runs pieces of work on threads of its own, at most so many at once; with one, in the order in
// which they were given. A thread is started when there is work and none is idle. It ends when it
// was idle for half a minute, except the last one. Any thread.
//
// Not QThreadPool: when the system has no thread to spare, that one of Qt 6.4 loses the work, and
// the place of the thread for good. Here the work waits until one of the threads has time, or until
// a thread can be started, which the main thread's event loop tries again every second.
//
// Work must not wait for other work of the same pool: there may be no second thread.
class WorkPool
{
public:
    using Work = std::move_only_function<void()>;

    explicit WorkPool(std::size_t mostThreads = 1);

    // Drops what no thread has time for yet. Waits for nothing: what runs goes on.
    ~WorkPool();
    WorkPool(const WorkPool &) = delete;
    WorkPool &operator=(const WorkPool &) = delete;

    // The work must not throw.
    void start(Work work);

    // The future has what the work returns or throws. When the work was dropped it is cancelled and
    // must not be asked for a result.
    template<typename Function>
    QFuture<std::invoke_result_t<Function &>> run(Function function)
    {
        QPromise<std::invoke_result_t<Function &>> promise;
        promise.start();
        auto future = promise.future();
        start([promise = std::move(promise), function = std::move(function)]() mutable {
            keep(promise, function);
            promise.finish();
        });
        return future;
    }

    // Until release(), what is given waits; what already runs goes on.
    void hold();
    void release();

    // Drops what no thread has time for yet.
    void clear();

    // Waits until nothing runs or waits.
    void waitForDone();

    // The same; false when the time was not enough.
    bool waitForDone(std::chrono::nanoseconds within);

private:
    struct State;

    template<typename Result, typename Function>
    static void keep(QPromise<Result> &promise, Function &function)
    {
        try {
            if constexpr (std::is_void_v<Result>) {
                function();
            } else {
                promise.addResult(function());
            }
        } catch (...) {
            promise.setException(std::current_exception());
        }
    }

    static void ensureThreads(const std::shared_ptr<State> &state);
    static bool startThread(const std::shared_ptr<State> &state);
    static void tryAgainLater(const std::shared_ptr<State> &state);

    const std::shared_ptr<State> m_state; // shared with the threads
};

} // namespace ostrelle
