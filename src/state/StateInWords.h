#pragma once

#include <QString>

namespace ostrelle
{

class GatewayViewModel;
class VoiceViewModel;

// What the pearl's colour says, for people who do not see it: "Gateway online, voice: Listening".
QString stateInWords(const GatewayViewModel &gatewayVM, const VoiceViewModel &voiceVM);

} // namespace ostrelle
