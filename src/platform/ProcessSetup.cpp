#include "platform/ProcessSetup.h"

#include <atomic>
#include <csignal>
#include <sys/resource.h>

namespace ostrelle
{

namespace
{

// The soft descriptor limit the process was started with; 0 while it was not changed. Only
// prepareProcess() writes it, and a forked child must be able to read it without a lock.
std::atomic<rlim_t> inheritedDescriptorLimit = 0;
static_assert(std::atomic<rlim_t>::is_always_lock_free);

} // namespace

void prepareProcess()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);

    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
        const rlim_t before = limit.rlim_cur;
        limit.rlim_cur = limit.rlim_max;
        if (::setrlimit(RLIMIT_NOFILE, &limit) == 0) {
            inheritedDescriptorLimit = before;
        }
    }
}

void restoreForChild() noexcept
{
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);

    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);

    if (const rlim_t before = inheritedDescriptorLimit; before != 0) {
        rlimit limit{};
        if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
            limit.rlim_cur = before;
            ::setrlimit(RLIMIT_NOFILE, &limit);
        }
    }
}

} // namespace ostrelle
