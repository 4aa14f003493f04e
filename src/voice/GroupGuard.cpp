#include "voice/GroupGuard.h"

#include "core/BackgroundWork.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace ostrelle
{

namespace
{

// What is sent to the group is not for the guard itself, whose number the group has; KILL comes
// last, also when the guard cannot start a tool, and not at all once it is alone with what it has
// started. On a busy machine the looks take long, so the clock ends them too. It looks twice: a
// process may start another one behind the back of the first look. A look that has not seen the
// guard itself has failed.
constexpr char guardScript[] = R"(
trap '' HUP INT QUIT TERM
go_if_alone() {
    for look in 1 2; do
        cat /proc/[0-9]*/stat 2>/dev/null | awk -v guard=$$ '
            { pid = $1; sub(/^.*\) /, "") }
            pid == guard { seen = 1 }
            $3 == guard && $1 != "Z" && pid != guard && $2 != guard { others = 1 }
            END { exit others || !seen }' || return
    done
    trap - EXIT
    exit
}
look_at_clock() {
    read -r uptime idle </proc/uptime
    now=${uptime%.*}${uptime#*.} # hundredths of a second
}
read -r gone
trap 'kill -KILL 0' EXIT
go_if_alone
kill -TERM 0
look_at_clock
end=$((now + 100))
for tenth in 1 2 3 4 5 6 7 8 9 10; do
    sleep 0.1
    go_if_alone
    look_at_clock
    [ "$now" -lt "$end" ] || break
done)";

class SpawnSettings
{
public:
    explicit SpawnSettings(int standardInput)
    {
        ::posix_spawn_file_actions_init(&m_files);
        ::posix_spawn_file_actions_adddup2(&m_files, standardInput, STDIN_FILENO);
        for (const int output : {STDOUT_FILENO, STDERR_FILENO}) {
            ::posix_spawn_file_actions_addopen(&m_files, output, "/dev/null", O_WRONLY, 0);
        }
        ::posix_spawn_file_actions_addclosefrom_np(&m_files, STDERR_FILENO + 1);
        ::posix_spawnattr_init(&m_attributes);
        // Without a number, SETPGROUP makes a new group.
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);
        // The group may be asked to end before the shell has come to its first line.
        sigset_t askedToEnd;
        ::sigemptyset(&askedToEnd);
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
            ::sigaddset(&askedToEnd, signal);
        }
        ::posix_spawnattr_setsigmask(&m_attributes, &askedToEnd);
    }
    ~SpawnSettings()
    {
        ::posix_spawn_file_actions_destroy(&m_files);
        ::posix_spawnattr_destroy(&m_attributes);
    }
    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings &operator=(const SpawnSettings &) = delete;

    // Nothing when it cannot be started.
    std::optional<pid_t> start(const char *program, char *const *arguments) const
    {
        // Whatever search path this program has been given: only the system's own tools.
        std::string path = "PATH=/usr/bin:/bin";
        const std::array<char *, 2> environment{path.data(), nullptr};
        pid_t pid{};
        const int error =
            ::posix_spawn(&pid, program, &m_files, &m_attributes, arguments, environment.data());
        return error == 0 ? std::optional(pid) : std::nullopt;
    }

private:
    posix_spawn_file_actions_t m_files{};
    posix_spawnattr_t m_attributes{};
};

} // namespace

GroupGuard::GroupGuard(pid_t shell, Descriptor lifeline)
    : m_shell(shell)
    , m_lifeline(std::move(lifeline))
{
}

GroupGuard::~GroupGuard()
{
    if (m_lifeline) { // else it was moved away
        m_lifeline = Descriptor();
        utilityPool().start([shell = m_shell] { ::waitpid(shell, nullptr, 0); });
    }
}

std::optional<GroupGuard> GroupGuard::start()
{
    auto lifeline = Pipe::open();
    if (!lifeline) {
        return std::nullopt;
    }
    std::string name = "ostrelle-guard";
    std::string option = "-c";
    std::string text = guardScript;
    const std::array<char *, 4> arguments{name.data(), option.data(), text.data(), nullptr};
    const auto shell = SpawnSettings(lifeline->readEnd.get()).start("/bin/sh", arguments.data());
    return shell ? std::optional(GroupGuard(*shell, std::move(lifeline->writeEnd))) : std::nullopt;
}

} // namespace ostrelle
