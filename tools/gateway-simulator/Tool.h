#pragma once

#include <QByteArray>
#include <QStringList>

namespace ostrelle::simulator
{

// Runs one command of the tool and returns the exit status: 0, 1 when the command failed, 2 when
// there is no such command.
int runTool(const QStringList &arguments);

// The commands, one a line.
QByteArray usage();

} // namespace ostrelle::simulator
