#pragma once

#include "statusserver/Response.h"

#include <string>

namespace ostrelle
{

enum class DocumentOutcome { Loaded, Missing, TooLarge };

// Reads a tracker document and makes the whole answer of it: the file's bytes exactly as stored.
// Missing is everything that cannot be served: no such file, not a regular file, unreadable, not
// UTF-8. `response` keeps its memory from one call to the next and holds an answer only when
// Loaded. `path` is in the file system's encoding. Any thread.
DocumentOutcome loadDocument(const std::string &path, std::size_t maxBytes, Response &response);

} // namespace ostrelle
