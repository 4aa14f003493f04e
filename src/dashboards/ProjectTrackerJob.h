#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace ostrelle
{

// Asks the gateway's tool to run the job that writes the project tracker. False when the tool or
// the job is missing. `runProcess(program, args)` gives a program's output. Blocks as long as the
// tool runs: background threads only.
bool runProjectTrackerJob(
    const std::function<QString(const QString &program, const QStringList &args)> &runProcess);

} // namespace ostrelle
