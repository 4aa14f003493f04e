#include "statusserver/FileReading.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrelle
{

std::optional<RegularFile> openRegular(const std::string &path)
{
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat attributes{};
    if (!file || ::fstat(file.get(), &attributes) != 0 || !S_ISREG(attributes.st_mode)) {
        return std::nullopt;
    }
    return RegularFile{std::move(file), static_cast<std::size_t>(attributes.st_size)};
}

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
