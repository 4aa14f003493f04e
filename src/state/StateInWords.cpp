#include "state/StateInWords.h"

#include "gateway/GatewayViewModel.h"
#include "state/StatusWords.h"
#include "voice/VoiceViewModel.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString stateInWords(const GatewayViewModel &gatewayVM, const VoiceViewModel &voiceVM)
{
    return u"Gateway "_s + StatusWords::gateway(gatewayVM.gatewayOnline()).word + u", voice: "_s +
           voiceVM.stateLabel();
}

} // namespace ostrelle
