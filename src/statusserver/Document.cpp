#include "statusserver/Document.h"

#include "platform/Files.h"
#include "statusserver/FileReading.h"

#include <algorithm>
#include <simdjson.h>
#include <sys/stat.h>

namespace ostrelle
{

namespace
{

// More than the longest header.
constexpr std::size_t headerRoom = 256;

// A page: what the kernel makes up is said to be empty and mostly fits in one.
constexpr std::size_t smallestGrowth = 4096;

// Reads behind the room for the header; the count of bytes, or nothing on an error.
std::optional<std::size_t> readBody(int file, std::size_t size, std::string &storage)
{
    std::optional<std::size_t> count;
    // One byte more than the file has shows the end without asking for it again.
    storage.resize_and_overwrite(headerRoom + size + 1, [&](char *data, std::size_t /*room*/) {
        count = readAt(file, {data + headerRoom, size + 1}, 0, size);
        return headerRoom + count.value_or(0);
    });
    return count;
}

void putHeader(Response &response)
{
    const std::string header = jsonHeader("200 OK", response.storage.size() - headerRoom);
    response.begin = headerRoom - header.size();
    std::ranges::copy(header, response.storage.data() + response.begin);
}

} // namespace

std::optional<LoadedDocument> loadDocument(const std::string &path, std::size_t maxBytes)
{
    const auto file = openRegular(path);
    if (!file) {
        return std::nullopt;
    }
    const ReadTurn turn(file->descriptor.get());
    LoadedDocument document{.response = {}, .version = settledVersion(file->descriptor.get())};
    Response &response = document.response;
    // A file that grows while it is read is read again.
    std::size_t size = file->size;
    while (size <= maxBytes) {
        const auto count = readBody(file->descriptor.get(), size, response.storage);
        if (!count) {
            return std::nullopt;
        }
        if (*count <= size) {
            if (settledVersion(file->descriptor.get()) != document.version) {
                document.version.reset(); // it was written to meanwhile
            }
            putHeader(response);
            const std::string_view body = std::string_view(response.storage).substr(headerRoom);
            return simdjson::validate_utf8(body.data(), body.size())
                       ? std::optional(std::move(document))
                       : std::nullopt;
        }
        size = 2 * size + smallestGrowth; // which may have claimed to be empty
    }
    return std::nullopt;
}

} // namespace ostrelle
