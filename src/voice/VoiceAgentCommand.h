#pragma once

#include "platform/ChildProcess.h"

namespace ostrelle
{

// How the voice agent is started: its script, run by the Python of the virtual environment
// `venvPath` (as the configuration has it). The script comes from `resources` when it is there,
// else from beside the environment. The error says what is missing, in words for the log. Relative
// paths are taken from this program's working directory.
std::expected<ChildCommand, QString> voiceAgentCommand(const QString &venvPath,
                                                       const std::optional<QString> &resources);

} // namespace ostrelle
