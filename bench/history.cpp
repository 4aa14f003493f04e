// Times one way of going through a session log. Usage: bench-history digest|read FILE
//
// digest: the last 50 records, as the status server finds them.
// read: what that cannot do without, reading in 64 KB blocks and checking the UTF-8.
// Prints the milliseconds of the first and of the fastest pass and the peak of private memory.

#include "platform/Files.h"
#include "statusserver/FileReading.h"
#include "statusserver/SessionDigest.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <simdjson.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

bool readThrough(int file)
{
    std::vector<char> block(std::size_t{64} * 1024);
    bool valid = true;
    while (true) {
        const ssize_t count = ::read(file, block.data(), block.size());
        if (count <= 0) {
            return valid;
        }
        valid = simdjson::validate_utf8(block.data(), static_cast<std::size_t>(count)) && valid;
    }
}

// A line of the process's status, in KiB.
long memory(std::string_view name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) {
            return std::strtol(line.c_str() + name.size(), nullptr, 10);
        }
    }
    return 0;
}

std::size_t pass(const char *path, bool digest)
{
    const auto file = ostrelle::openRegular(path);
    if (!file) {
        std::perror(path);
        std::exit(1);
    }
    return digest ? ostrelle::historyBody(
                        ostrelle::digestSessionLog(file->descriptor.get(), {}, std::stop_token()))
                        .size()
                  : static_cast<std::size_t>(readThrough(file->descriptor.get()));
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: bench-history digest|read FILE\n", stderr);
        return 2;
    }
    const bool digest = std::strcmp(argv[1], "digest") == 0;
    std::vector<double> times;
    std::size_t result = 0;
    const auto end = Clock::now() + std::chrono::seconds(1);
    while (times.size() < 3 || (Clock::now() < end && times.size() < 200)) {
        const auto began = Clock::now();
        result = pass(argv[2], digest);
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - began).count());
    }
    // The peak less what is backed by files, the program and its libraries above all.
    const long privateKb = memory("VmHWM:") - memory("RssFile:");
    std::printf("first_ms=%.3f best_ms=%.3f private_kb=%ld result=%zu\n", times.front(),
                *std::ranges::min_element(times), privateKb, result);
}
