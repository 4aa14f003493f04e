#include "statusserver/FileVersion.h"

#include "platform/Files.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fcntl.h>
#include <linux/magic.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace ostrelle
{

namespace
{

using std::chrono::system_clock;

// The kernel's clock for files ticks every 10 ms or more often.
constexpr std::chrono::milliseconds coarseTime{50};

// Not in every version of the kernel's header.
constexpr unsigned xfsMagic = 0x58465342;
constexpr unsigned zfsMagic = 0x2FC12FC1;
constexpr unsigned bcachefsMagic = 0xCA451A4E;

std::optional<FileVersion> versionOf(int file)
{
    struct statx attributes{};
    if (::statx(file, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_BASIC_STATS, &attributes) !=
        0) {
        return std::nullopt;
    }
    return FileVersion{.device =
                           std::uint64_t{attributes.stx_dev_major} << 32 | attributes.stx_dev_minor,
                       .file = attributes.stx_ino,
                       .size = attributes.stx_size,
                       .changedSeconds = attributes.stx_ctime.tv_sec,
                       .changedNanoseconds = attributes.stx_ctime.tv_nsec};
}

// Nobody else changes what is on it, so the kernel's memory is the truth.
bool isOfThisMachine(int file)
{
    constexpr std::array known{unsigned{EXT4_SUPER_MAGIC},
                               unsigned{BTRFS_SUPER_MAGIC},
                               unsigned{TMPFS_MAGIC},
                               unsigned{F2FS_SUPER_MAGIC},
                               unsigned{OVERLAYFS_SUPER_MAGIC},
                               xfsMagic,
                               zfsMagic,
                               bcachefsMagic};
    struct statfs system{};
    return ::fstatfs(file, &system) == 0 &&
           std::ranges::find(known, static_cast<unsigned>(system.f_type)) != known.end();
}

bool changedLately(const FileVersion &version)
{
    const auto changed = std::chrono::seconds(version.changedSeconds) +
                         std::chrono::nanoseconds(version.changedNanoseconds);
    return system_clock::now().time_since_epoch() - changed < coarseTime;
}

} // namespace

std::optional<FileVersion> versionInMemory(const std::string &path)
{
    // O_PATH asks the file system for nothing.
    open_how how{};
    how.flags = O_PATH | O_CLOEXEC;
    how.resolve = RESOLVE_CACHED;
    const Descriptor file(
        static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how)));
    return file ? versionOf(file.get()) : std::nullopt;
}

std::optional<FileVersion> settledVersion(int file)
{
    const auto version = isOfThisMachine(file) ? versionOf(file) : std::nullopt;
    return version && !changedLately(*version) ? version : std::nullopt;
}

} // namespace ostrelle
