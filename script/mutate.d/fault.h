// Included before everything else when script/mutate builds many faults at once.
#pragma once
#ifdef __cplusplus

#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace mutation
{

inline constexpr int mostFaults = 10'000; // the code has some 7,300

// A byte for each fault that the program has come by. It is mapped, not written: tests take the
// descriptors and the room away, and count what is open.
inline std::atomic<char> *openReached()
{
    const char *const path = std::getenv("FAULTS_REACHED");
    const int file = path != nullptr ? ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0666) : -1;
    if (file < 0) {
        return nullptr;
    }
    void *const bytes =
        ::ftruncate(file, mostFaults) == 0
            ? ::mmap(nullptr, mostFaults, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0)
            : MAP_FAILED;
    ::close(file);
    return bytes != MAP_FAILED ? static_cast<std::atomic<char> *>(bytes) : nullptr;
}

// Looked up at the start, since the environment may be changed later on.
inline const int chosen = [] {
    const char *const number = std::getenv("FAULT");
    return number != nullptr ? std::atoi(number) : -1;
}();
inline std::atomic<char> *const reached = openReached();

} // namespace mutation

// Whether the fault of that number is to be made.
inline bool fault(int number)
{
    if (mutation::reached != nullptr) {
        mutation::reached[number] = 1;
    }
    return number == mutation::chosen;
}

#endif
