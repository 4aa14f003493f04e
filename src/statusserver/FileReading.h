#pragma once

#include <optional>
#include <span>
#include <sys/types.h>

namespace ostrelle
{

// Reading without a mapping: a file that is cut short while it is read yields fewer bytes, where a
// mapping would end the process.

// Reads at `offset` until `room` is full or the file ends, and asks no further once exactly
// `expected` bytes are there. Returns the count of bytes, or nothing on an error.
std::optional<std::size_t> readAt(int file, std::span<char> room, off_t offset,
                                  std::size_t expected);

} // namespace ostrelle
