#pragma once

namespace ostrelle
{

class GatewaySettings;
class ServiceManager;

// Switches the voice agent on or off as a feature. One that is off does not run, nor does it start
// with the program. Main thread only.
void switchVoice(ServiceManager &services, GatewaySettings &settings, bool isOn);

} // namespace ostrelle
