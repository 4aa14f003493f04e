#include "statusserver/FileUtf8.h"

#include "statusserver/FileReading.h"

#include <algorithm>
#include <simdjson.h>
#include <string_view>
#include <vector>

namespace ostrelle
{

namespace
{

// How many bytes a sequence has whose first one is `lead`, which is 0xC0 or more.
std::size_t sequenceLength(unsigned char lead)
{
    return lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
}

// The length of the unfinished sequence at the end, 0 to 3 bytes.
std::size_t unfinishedTail(std::string_view bytes)
{
    const std::size_t longest = std::min<std::size_t>(3, bytes.size());
    for (std::size_t back = 1; back <= longest; ++back) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
        if (byte >= 0xC0) {
            return sequenceLength(byte) > back ? back : 0;
        }
        if (byte < 0x80) {
            break;
        }
    }
    return 0;
}

} // namespace

std::optional<off_t> endOfUtf8File(int file, std::size_t blockBytes, const std::stop_token &stop)
{
    std::vector<char> buffer(3 + blockBytes);
    std::size_t carried = 0;
    off_t offset = 0;
    while (!stop.stop_requested()) {
        const auto count = readAt(file, {buffer.data() + carried, blockBytes}, offset, blockBytes);
        if (!count) {
            return std::nullopt;
        }
        if (*count == 0) {
            return carried == 0 ? std::optional(offset) : std::nullopt;
        }
        offset += static_cast<off_t>(*count);
        const std::string_view bytes(buffer.data(), carried + *count);
        carried = unfinishedTail(bytes);
        const std::size_t whole = bytes.size() - carried;
        if (!simdjson::validate_utf8(bytes.data(), whole)) {
            return std::nullopt;
        }
        std::copy_n(buffer.data() + whole, carried, buffer.data());
    }
    return std::nullopt;
}

} // namespace ostrelle
