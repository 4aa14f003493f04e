#include "statusserver/Document.h"

#include "platform/Files.h"
#include "statusserver/FileReading.h"

#include <algorithm>
#include <chrono>
#include <simdjson.h>
#include <sys/stat.h>
#include <thread>

namespace ostrelle
{

namespace
{

// More than the longest header.
constexpr std::size_t headerRoom = 256;

// A page: what the kernel makes up is said to be empty and mostly fits in one.
constexpr std::size_t smallestGrowth = 4096;

// At a document that is being written to, or that is on a file system which does not say so.
constexpr int mostAttempts = 20;
constexpr std::chrono::milliseconds untilNextAttempt{5};

// Reads behind the room for the header; the count of bytes, or nothing on an error.
std::optional<std::size_t> readBody(int file, std::size_t size, std::string &storage)
{
    std::optional<std::size_t> count;
    // One byte more than the file has shows the end without asking for it again.
    storage.resize_and_overwrite(headerRoom + size + 1, [&](char *data, std::size_t room) {
        count = readAt(file, {data + headerRoom, room - headerRoom}, 0, size);
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

std::string_view bodyOf(const LoadedDocument &document)
{
    return std::string_view(document.response.storage).substr(headerRoom);
}

bool isJson(std::string_view text)
{
    simdjson::dom::parser parser;
    return parser.parse(text.data(), text.size()).error() == simdjson::SUCCESS;
}

struct Attempt {
    LoadedDocument document; // without a header yet
    bool wasWrittenTo;       // meanwhile, by another program

    // What is not settled may be half of a document. A large one is taken as it is, because looking
    // at it takes several times its size.
    bool mayBeHalf() const
    {
        constexpr std::size_t mostLookedAt = std::size_t{4} * 1024 * 1024;
        const std::string_view body = bodyOf(document);
        return wasWrittenTo || (!document.version && body.size() <= mostLookedAt && !isJson(body));
    }
};

std::optional<Attempt> readOnce(const std::string &path, std::size_t maxBytes)
{
    const auto file = openRegular(path);
    if (!file) {
        return std::nullopt;
    }
    const int fd = file->descriptor.get();
    const ReadTurn turn(fd);
    struct stat before{};
    struct stat after{};
    LoadedDocument document{.response = {}, .version = settledVersion(fd)};
    static_cast<void>(::fstat(fd, &before));
    // A file that grows while it is read is read again.
    auto size = static_cast<std::size_t>(file->attributes.st_size);
    while (size <= maxBytes) {
        const auto count = readBody(fd, size, document.response.storage);
        if (!count) {
            return std::nullopt;
        }
        if (*count <= size) {
            static_cast<void>(::fstat(fd, &after)); // where it fails they are not the same
            const bool wasWrittenTo = !isSameContent(before, after);
            // The version may stay: a file that was written to has another one by now.
            return Attempt{.document = std::move(document), .wasWrittenTo = wasWrittenTo};
        }
        size = 2 * size + smallestGrowth; // which may have claimed to be empty
    }
    return std::nullopt;
}

} // namespace

std::optional<LoadedDocument> loadDocument(const std::string &path, std::size_t maxBytes)
{
    auto attempt = readOnce(path, maxBytes);
    for (int i = 1; i < mostAttempts && attempt && attempt->mayBeHalf(); ++i) {
        std::this_thread::sleep_for(untilNextAttempt);
        attempt = readOnce(path, maxBytes);
    }
    if (!attempt) {
        return std::nullopt;
    }
    putHeader(attempt->document.response);
    const std::string_view body = bodyOf(attempt->document);
    return simdjson::validate_utf8(body.data(), body.size())
               ? std::optional(std::move(attempt->document))
               : std::nullopt;
}

} // namespace ostrelle
