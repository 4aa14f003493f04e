#pragma once

#include <chrono>
#include <expected>
#include <gio/gio.h>
#include <memory>

namespace ostrelle
{

struct GObjectUnref {
    void operator()(void *object) const { g_object_unref(object); }
};
template<typename T>
using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

// No call over the session bus lasts longer, whatever the other side does, but for the user's
// answer to a prompt.
inline constexpr std::chrono::seconds sessionBusDeadline{2};

enum class BusProblem {
    Missing,  // the session has none, or it is gone
    NoAnswer, // within the deadline
};

// The user's session bus. Never starts a bus of its own, and the program outlives the bus. Blocks:
// background threads only.
std::expected<GObjectPtr<GDBusConnection>, BusProblem> sessionBus();

// Drives GLib's asynchronous calls from a thread without a main loop, within one deadline for all
// of them. Lives on one thread.
class BoundedCalls
{
public:
    explicit BoundedCalls(std::chrono::milliseconds deadline = sessionBusDeadline);
    ~BoundedCalls();
    BoundedCalls(const BoundedCalls &) = delete;
    BoundedCalls &operator=(const BoundedCalls &) = delete;

    GCancellable *cancellable() const { return m_cancellable.get(); }

    // `start(callback, userData)` begins one call with the cancellable above. Returns the result of
    // the call; when the deadline has passed, that of a cancelled call.
    template<typename Start>
    GObjectPtr<GAsyncResult> finish(Start &&start)
    {
        m_result.reset();
        start(&BoundedCalls::keepResult, this);
        waitForResult();
        return std::move(m_result);
    }

private:
    static void keepResult(GObject *source, GAsyncResult *result, gpointer self);
    static gboolean cancel(gpointer self);
    void waitForResult();

    struct SourceDestroy {
        void operator()(GSource *source) const
        {
            g_source_destroy(source);
            g_source_unref(source);
        }
    };

    GMainContext *const m_context; // borrowed
    GObjectPtr<GCancellable> m_cancellable;
    std::unique_ptr<GSource, SourceDestroy> m_deadline;
    GObjectPtr<GAsyncResult> m_result;
};

} // namespace ostrelle
