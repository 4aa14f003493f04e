#include "statusserver/SessionLog.h"

#include <filesystem>
#include <string_view>
#include <sys/stat.h>

namespace ostrelle
{

namespace
{

bool isSessionLog(std::string_view name)
{
    return name.ends_with(".jsonl") && !name.contains(".deleted") && !name.contains(".reset.") &&
           !name.contains(".lock");
}

// Seconds since 1970.
std::optional<double> modificationTime(const std::string &path)
{
    struct stat attributes{};
    if (::stat(path.c_str(), &attributes) != 0) {
        return std::nullopt;
    }
    const timespec &time = attributes.st_mtim;
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

} // namespace

std::optional<std::string> newestSessionLog(const std::string &directory)
{
    std::optional<std::string> newest;
    double newestTime = 0;
    std::error_code error;
    std::filesystem::directory_iterator entry(directory, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string path = entry->path().string();
        const auto time =
            isSessionLog(entry->path().filename().string()) ? modificationTime(path) : std::nullopt;
        if (time && (!newest || *time > newestTime)) {
            newest = path;
            newestTime = *time;
        }
    }
    return newest;
}

} // namespace ostrelle
