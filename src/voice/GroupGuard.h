#pragma once

#include "platform/Files.h"

#include <optional>
#include <sys/types.h>

namespace ostrelle
{

// Ends what is left of a process group when the object goes, or this program does, whatever ends
// it: asks first, and kills a second later. The kernel would end only the process that was started,
// not what that has started in turn. A small shell does it: it leads the group, so that the group's
// number cannot become somebody else's, and waits for the end of a pipe. A process that makes a
// group of its own leaves it. Main thread only.
class GroupGuard
{
public:
    // Makes a group, for others to join. Absent when the shell cannot be started.
    static std::optional<GroupGuard> start();

    pid_t group() const { return m_shell; }

    GroupGuard(GroupGuard &&other) noexcept = default;
    GroupGuard(const GroupGuard &) = delete;
    GroupGuard &operator=(const GroupGuard &) = delete;
    ~GroupGuard();

private:
    GroupGuard(pid_t shell, Descriptor lifeline);

    pid_t m_shell;
    Descriptor m_lifeline;
};

} // namespace ostrelle
