#pragma once

#include <chrono>
#include <cstddef>

namespace ostrelle
{

// How much patience the server has with its clients.
struct ServerLimits {
    // A client that sends nothing for so long is dropped.
    std::chrono::milliseconds untilRequest = std::chrono::seconds{5};
    // One that has not read its answer so long after its start, too.
    std::chrono::milliseconds untilReading = std::chrono::seconds{30};
    // Threads for the session history and for large documents.
    std::size_t workerThreads = 4;
};

} // namespace ostrelle
