#pragma once

#include "core/ToolEnvironment.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <stop_token>

namespace ostrelle
{

// The gateway's command-line tool: where it is and how it is asked. A plain value; all calls block
// until a child process has ended: background threads only.
class GatewayTool
{
public:
    // Longer than any answer takes: a run that is not done by then hangs, and is killed. As long as
    // four passes of SyncService last, the oldest of which makes way for the next one.
    static constexpr std::chrono::milliseconds defaultDeadline = std::chrono::minutes(2);

    // The candidates are tried in order, before the program's own PATH and userToolFolders().
    explicit GatewayTool(QStringList candidates = gatewayToolPlaces(),
                         std::chrono::milliseconds deadline = defaultDeadline);

    // The tool's path, or an empty text when it is not installed. What anybody could have put there
    // does not count.
    QString findDuskrell() const;

    // The program's whole standard output, whatever its exit status; what it leaves behind with its
    // output open is killed. Empty when it cannot be started, hangs, is stopped, floods its output
    // or writes something that is not UTF-8.
    QString runCommand(const QString &program, const QStringList &args,
                       const std::stop_token &stop = {}) const;

private:
    QStringList m_candidates;
    std::chrono::milliseconds m_deadline;
};

} // namespace ostrelle
