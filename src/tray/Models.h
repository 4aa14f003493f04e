#pragma once

namespace ostrelle
{

class GatewayViewModel;
class ServiceManager;
class SetupManager;
class StatusServer;
class VoiceViewModel;

// What the program makes once and its face shows. All of it outlives the face.
struct Models {
    GatewayViewModel *gatewayVM = nullptr;
    VoiceViewModel *voiceVM = nullptr;
    ServiceManager *serviceManager = nullptr;
    SetupManager *setupManager = nullptr;
    StatusServer *statusServer = nullptr;
};

} // namespace ostrelle
