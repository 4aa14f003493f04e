#include "tray/StateInWords.h"

#include "core/OneLine.h"
#include "gateway/GatewayViewModel.h"
#include "voice/VoiceViewModel.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString stateInWords(const GatewayViewModel &gatewayVM, const VoiceViewModel &voiceVM)
{
    const QString gateway = gatewayVM.gatewayOnline() ? u"Gateway online"_s : u"Gateway offline"_s;
    return gateway + u", voice: "_s + oneLine(voiceVM.stateLabel());
}

} // namespace ostrelle
