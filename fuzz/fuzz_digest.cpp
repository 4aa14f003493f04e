// Feeds bytes to the status server as a session log. The first two bytes choose the block size and
// the longest line; the answer must not depend on the block size.

#include "Input.h"
#include "statusserver/SessionDigest.h"

#include <sys/mman.h>
#include <unistd.h>

using namespace ostrelle;

namespace
{

// A file that is only in memory, the same for every input.
int scratchFile()
{
    static const int file = ::memfd_create("session-log", MFD_CLOEXEC);
    return file;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    const std::size_t logBytes = size - 2;
    require(::ftruncate(scratchFile(), 0) == 0);
    require(::pwrite(scratchFile(), data + 2, logBytes, 0) == static_cast<ssize_t>(logBytes));

    DigestOptions options{.limit = 3, .maxLineBytes = 16 + std::size_t{data[1]} * 8};
    const auto expected = digestSessionLog(scratchFile(), options, {});
    options.blockBytes = 1 + std::size_t{data[0]};
    const auto found = digestSessionLog(scratchFile(), options, {});
    require(found.size() <= 3 && historyBody(found) == historyBody(expected));
    return 0;
}
