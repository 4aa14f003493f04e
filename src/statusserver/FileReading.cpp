#include "statusserver/FileReading.h"

#include <cerrno>
#include <unistd.h>

namespace ostrelle
{

std::optional<std::size_t> readAt(int file, std::span<char> room, off_t offset,
                                  std::size_t expected)
{
    std::size_t filled = 0;
    while (filled < room.size()) {
        const ssize_t count = ::pread(file, room.data() + filled, room.size() - filled,
                                      offset + static_cast<off_t>(filled));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::nullopt;
        }
        filled += static_cast<std::size_t>(count);
        if (count == 0 || filled == expected) {
            break;
        }
    }
    return filled;
}

} // namespace ostrelle
