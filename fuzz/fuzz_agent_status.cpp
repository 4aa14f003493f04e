// Feeds a text to the three readers of the agent status document.

#include "Input.h"
#include "tracker/AgentStatus.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto payload = readAgentStatus(textOf(data, size));
    const auto entries = readAgentEntries(textOf(data, size));
    require(payload.has_value() == entries.has_value());
    if (entries) {
        require(payload->agents.size() <= static_cast<qsizetype>(entries->members().size()));
        for (const JsonMember &entry : entries->members()) {
            readTopologyEntry(entry);
        }
    }
    return 0;
}
