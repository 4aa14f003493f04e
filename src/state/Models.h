#pragma once

#include "settings/Settings.h"

namespace ostrelle
{

class GatewayInUse;
class GatewaySettings;
class GatewayViewModel;
class ServiceManager;
class SetupManager;
class StatusServer;
class VoiceViewModel;

// What the program makes once and its face shows. All of it outlives the face.
struct Models {
    Settings settings;
    GatewayViewModel *gatewayVM = nullptr;
    GatewayInUse *gatewayInUse = nullptr;
    GatewaySettings *gatewaySettings = nullptr;
    VoiceViewModel *voiceVM = nullptr;
    ServiceManager *serviceManager = nullptr;
    SetupManager *setupManager = nullptr;
    StatusServer *statusServer = nullptr;
};

} // namespace ostrelle
