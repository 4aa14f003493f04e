#pragma once

namespace ostrelle
{

// The subcommands with their options, which is also what the completions are made from.

// Understands the command line and does what it says; the status to end with.
int runCommandLine(int argc, char **argv);

} // namespace ostrelle
