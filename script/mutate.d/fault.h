// Included before everything else when script/mutate builds many faults at once.
#pragma once
#ifdef __cplusplus

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace mutation
{

// Looked up at the start, since the environment may be changed later on.
inline const int chosen = [] {
    const char *const number = std::getenv("FAULT");
    return number != nullptr ? std::atoi(number) : -1;
}();
inline const char *const reached = std::getenv("FAULTS_REACHED");
inline std::atomic<bool> told[10'000]; // the code has some 7,300

} // namespace mutation

// Whether the fault of that number is to be made.
inline bool fault(int number)
{
    if (mutation::reached != nullptr && !mutation::told[number].exchange(true)) {
        char line[16];
        const int size = std::snprintf(line, sizeof line, "%d\n", number);
        // No descriptor stays open, since tests count them.
        const int file = ::open(mutation::reached, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
        static_cast<void>(!::write(file, line, static_cast<std::size_t>(size)));
        ::close(file);
    }
    return number == mutation::chosen;
}

#endif
