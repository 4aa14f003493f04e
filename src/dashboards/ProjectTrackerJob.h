#pragma once

#include <QString>
#include <QStringList>

#include <expected>
#include <functional>

namespace ostrelle
{

enum class TrackerJobProblem {
    NoTool,
    NoJob, // or the tool does not list its jobs
};

// Asks the gateway's tool to run the job that writes the project tracker. `runProcess(program,
// args)` gives a program's output. Blocks as long as the tool runs: background threads only.
std::expected<void, TrackerJobProblem> runProjectTrackerJob(
    const std::function<QString(const QString &program, const QStringList &args)> &runProcess);

} // namespace ostrelle
