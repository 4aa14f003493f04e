#pragma once

#include <QString>

namespace ostrelle
{

class GatewayViewModel;
class StatusServer;
class VoiceViewModel;

// What the pearl's colour says, for people who do not see it, "Gateway online, voice: Listening",
// and that the status server waits for its port, if it does.
QString stateInWords(const GatewayViewModel &gatewayVM, const VoiceViewModel &voiceVM,
                     const StatusServer &statusServer);

} // namespace ostrelle
