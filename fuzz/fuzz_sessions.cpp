// Feeds a text to the agent sync service as the gateway tool's session list.

#include "Input.h"
#include "tracker/AgentStatus.h"
#include "tracker/SessionList.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto now = QDateTime::fromMSecsSinceEpoch(1'795'000'000'000);
    if (const auto document = agentStatusFromSessions(textOf(data, size), now)) {
        const auto payload = readAgentStatus(document->toStdString());
        require(payload && !payload->agents.isEmpty() && payload->completions.isEmpty());
    }
    return 0;
}
