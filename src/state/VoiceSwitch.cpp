#include "state/VoiceSwitch.h"

#include "gateway/GatewaySettings.h"
#include "voice/ServiceManager.h"

namespace ostrelle
{

void switchVoice(ServiceManager &services, GatewaySettings &settings, bool isOn)
{
    services.setVoiceEnabled(isOn);
    if (!isOn) {
        services.stopVoice();
        settings.setAutoStartVoice(false);
    }
}

} // namespace ostrelle
