#pragma once

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace ostrelle
{

inline const std::vector<std::string> completedShells{"bash", "zsh", "fish"};

// The script that completes the command line in that shell, one of these.
std::string completionsFor(const std::string &shell, const CLI::App &app);

} // namespace ostrelle
