#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ostrelle
{

// Which content a file has, as far as its file system tells without the content.
struct FileVersion {
    std::uint64_t device;
    std::uint64_t file;
    std::uint64_t size;
    std::int64_t changedSeconds; // since 1970
    std::uint32_t changedNanoseconds;

    friend bool operator==(const FileVersion &, const FileVersion &) = default;
};

// The version of the file at a path as the kernel has it in memory. Never waits for a disk or for
// another machine: where that would be needed, and where there is no file, it is absent.
std::optional<FileVersion> versionInMemory(const std::string &path);

// The version of an open file, to be asked before its content is read: as long as versionInMemory()
// gives the same, the content is the same. Absent where that cannot be said: the file system is not
// known to be one of this machine alone, or the last change is so recent that another one could
// have the same time. May wait for the disk.
std::optional<FileVersion> settledVersion(int file);

} // namespace ostrelle
