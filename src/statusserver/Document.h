#pragma once

#include "statusserver/FileVersion.h"
#include "statusserver/Response.h"

#include <optional>
#include <string>

namespace ostrelle
{

struct LoadedDocument {
    Response response;                  // the whole answer
    std::optional<FileVersion> version; // absent: nothing tells whether it still holds
};

// Reads a tracker document and makes the whole answer of it: the file's bytes exactly as stored.
// Absent is everything that cannot be served: no such file, not a regular file, unreadable, not
// UTF-8, too large. `path` is in the file system's encoding. May wait for the disk; any thread.
std::optional<LoadedDocument> loadDocument(const std::string &path, std::size_t maxBytes);

} // namespace ostrelle
