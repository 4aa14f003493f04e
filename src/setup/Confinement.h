#pragma once

#include "platform/ChildProcess.h"

#include <utility>

namespace ostrelle
{

// Whether this program may gain no privileges, as our user unit has it: then nothing that it starts
// may either, and sudo does not work.
bool isConfined();

// The installer as a unit of its own of the user's systemd, which confines it no more. Its tools
// are found by the search path. Background threads only.
class InstallerUnit
{
public:
    explicit InstallerUnit(QString searchPath)
        : m_searchPath(std::move(searchPath))
    {
    }

    // False in a container or a sandbox, say, where no systemd of the user's runs.
    bool canBeStarted() const;

    // Whether one still runs, which an earlier run of this program has started.
    bool isRunning() const;

    // What starts this command as the unit, which reads and prints what this program's child would.
    // Its environment stands on a command line and in the unit: no secret belongs there.
    ChildCommand starting(const ChildCommand &command) const;

private:
    QProcessEnvironment environment() const;

    QString m_searchPath;
};

} // namespace ostrelle
