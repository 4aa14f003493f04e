// Feeds a text to the reader of the project tracker document.

#include "Input.h"
#include "tracker/ProjectTracker.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto tracker = readProjectTracker(textOf(data, size));
    require(tracker || !tracker.error().isEmpty());
    return 0;
}
