#include "state/StateInWords.h"

#include "core/OneLine.h"
#include "gateway/GatewayViewModel.h"
#include "state/StatusWords.h"
#include "statusserver/StatusServer.h"
#include "voice/VoiceViewModel.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString stateInWords(const GatewayViewModel &gatewayVM, const VoiceViewModel &voiceVM,
                     const StatusServer &statusServer)
{
    const QString gateway = StatusWords::gateway(gatewayVM.gatewayOnline()).word;
    const QString status = statusServer.portTaken() ? u", status: waits for its port"_s : QString();
    return u"Gateway "_s + gateway + u", voice: "_s + oneLine(voiceVM.stateLabel()) + status;
}

} // namespace ostrelle
