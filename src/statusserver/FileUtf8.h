#pragma once

#include <cstddef>
#include <optional>
#include <stop_token>
#include <sys/types.h>

namespace ostrelle
{

// Reads a whole file in blocks and checks that it is UTF-8. Returns where the file ended, or
// nothing when it is not UTF-8, cannot be read or `stop` was requested.
std::optional<off_t> endOfUtf8File(int file, std::size_t blockBytes, const std::stop_token &stop);

} // namespace ostrelle
