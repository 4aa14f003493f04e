#include "platform/ProcessSetup.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <malloc.h>
#include <pwd.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrelle
{

namespace
{

// Larger blocks are mappings of their own, which go back to the system when they are freed.
constexpr int bytesOfOwnMapping = 1024 * 1024;

// What the process was started with. Only prepareProcess() writes it, and a forked child must be
// able to read it without a lock.
struct Inherited {
    std::atomic<bool> known = false;
    std::atomic<rlim_t> descriptors = 0; // soft limits
    std::atomic<rlim_t> coreBytes = 0;
    std::atomic<mode_t> mask = 0;
};
static_assert(std::atomic<rlim_t>::is_always_lock_free);

Inherited inherited;

// Returns the soft limit that there was.
rlim_t setSoftLimit(__rlimit_resource resource, rlim_t (*choose)(const rlimit &limit)) noexcept
{
    rlimit limit{};
    ::getrlimit(resource, &limit); // fails for no resource that there is
    const rlim_t before = limit.rlim_cur;
    limit.rlim_cur = choose(limit);
    ::setrlimit(resource, &limit);
    return before;
}

void restoreSoftLimit(__rlimit_resource resource, rlim_t before) noexcept
{
    rlimit limit{};
    ::getrlimit(resource, &limit);
    limit.rlim_cur = std::min(before, limit.rlim_max);
    ::setrlimit(resource, &limit);
}

} // namespace

void prepareProcess()
{
    // Else that limit grows with the largest block that was freed, and the next ones of that size
    // may stay in the middle of the heap.
    ::mallopt(M_MMAP_THRESHOLD, bytesOfOwnMapping);
    // A heap of a thread's own grows by one page a system call: 600 of them while the panel's
    // first opening reads its views, a tenth of its time. Most of our threads only wait.
    ::mallopt(M_ARENA_MAX, 1);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);

    const auto highest = [](const rlimit &limit) { return limit.rlim_max; };
    const auto none = [](const rlimit & /*limit*/) { return rlim_t{0}; };
    const rlim_t descriptors = setSoftLimit(RLIMIT_NOFILE, highest);
    const rlim_t coreBytes = setSoftLimit(RLIMIT_CORE, none);
    const mode_t mask = ::umask(S_IRWXG | S_IRWXO);
    if (!inherited.known) {
        inherited.descriptors = descriptors;
        inherited.coreBytes = coreBytes;
        inherited.mask = mask;
        inherited.known = true;
    }
}

void ensureHome()
{
    const char *home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') {
        return;
    }
    if (const passwd *user = ::getpwuid(::getuid()); user != nullptr) {
        ::setenv("HOME", user->pw_dir, 1);
    }
}

void acceptAnyBusAtItsAddress()
{
    constexpr const char *variable = "DBUS_SESSION_BUS_ADDRESS";
    constexpr std::string_view identity = ",guid=";
    const char *value = std::getenv(variable);
    std::string address = value != nullptr ? value : "";
    for (auto begin = address.find(identity); begin != std::string::npos;
         begin = address.find(identity)) {
        address.erase(begin, address.find_first_of(",;", begin + 1) - begin);
        ::setenv(variable, address.c_str(), 1);
    }
}

void restoreForChild() noexcept
{
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);

    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);

    if (inherited.known) {
        restoreSoftLimit(RLIMIT_NOFILE, inherited.descriptors);
        restoreSoftLimit(RLIMIT_CORE, inherited.coreBytes);
        ::umask(inherited.mask);
    }
    // Also what this program was itself started with and has never heard of.
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

} // namespace ostrelle
