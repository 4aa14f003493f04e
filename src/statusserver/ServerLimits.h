#pragma once

#include <chrono>
#include <cstddef>

namespace ostrelle
{

// How much patience the server has with its clients, and how much of the machine they get.
struct ServerLimits {
    // A client that sends nothing for so long is dropped.
    std::chrono::milliseconds untilRequest = std::chrono::seconds{5};
    // One that reads nothing of its answer for so long, too; and one for whom no answer can be had
    // for so long, when the next one comes.
    std::chrono::milliseconds untilReading = std::chrono::seconds{30};
    // And one that reads fewer bytes a second, on the average of all that is beyond that time.
    std::size_t slowestReading = 4096;
    // Descriptors that the program may have open when a client comes; half of what the system
    // allows it if that is less. The others are for everything else in the program.
    int maxDescriptors = 8192;
    // Of all answers together that are held in memory; a single one may be larger.
    std::size_t maxAnswerBytes = std::size_t{64} * 1024 * 1024;
    // Threads for the session history, and how many requests for it may be under way.
    std::size_t historyThreads = 4;
    int maxHistoryRequests = 64;
    // After this time a port that was taken is tried again.
    std::chrono::milliseconds untilNextTry = std::chrono::seconds{30};
};

} // namespace ostrelle
