// Feeds a text to the reader of the cron tracker document.

#include "Input.h"
#include "tracker/CronTracker.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto tracker = readCronTracker(textOf(data, size));
    require(tracker || !tracker.error().isEmpty());
    return 0;
}
