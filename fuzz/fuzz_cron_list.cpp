// Feeds a text to the cron sync service as the gateway tool's job list.

#include "Input.h"
#include "tracker/CronTracker.h"
#include "tracker/JobList.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto now = QDateTime::fromMSecsSinceEpoch(1'795'000'000'000);
    if (const auto document = cronTrackerFromJobs(textOf(data, size), now)) {
        require(readCronTracker(document->toStdString()).has_value());
    }
    return 0;
}
