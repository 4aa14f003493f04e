#pragma once

#include <optional>
#include <string>

namespace ostrelle
{

// The path of the session log in a directory that was changed last; of two changed at the same time
// the one that the directory lists first. Deleted, reset and lock files are no logs. Any thread.
std::optional<std::string> newestSessionLog(const std::string &directory);

} // namespace ostrelle
