#pragma once

#include <string>

namespace CLI
{
class App;
}

namespace ostrelle
{

// The script that completes the command line in that shell: "bash", "zsh" or "fish".
std::string completionsFor(const std::string &shell, const CLI::App &app);

} // namespace ostrelle
