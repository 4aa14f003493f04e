#include "platform/Heap.h"

#include <cstddef>
#include <malloc.h>

namespace ostrelle
{

namespace
{

constexpr std::size_t muchUnused = std::size_t{8} * 1024 * 1024;

} // namespace

void trimHeap()
{
    if (::mallinfo2().fordblks > muchUnused) {
        ::malloc_trim(0);
    }
}

} // namespace ostrelle
