#pragma once

// The one place where the models become known to QML. The models themselves know nothing of it.

#include "dashboards/AgentsTopologyViewModel.h"
#include "dashboards/CronViewModel.h"
#include "dashboards/ProjectsViewModel.h"
#include "gateway/GatewayPairing.h"
#include "gateway/QuickChatVM.h"
#include "gateway/TailscalePeersModel.h"
#include "setup/SetupManager.h"
#include "state/StatusWords.h"
#include "statusserver/StatusServer.h"
#include "voice/VoiceViewModel.h"

#include <QtQml/qqml.h>

namespace ostrelle::qml
{

// Made by the program and handed to the views.

struct GatewayViewModelType {
    Q_GADGET
    QML_FOREIGN(ostrelle::GatewayViewModel)
    QML_NAMED_ELEMENT(GatewayViewModel)
    QML_UNCREATABLE("made by the program")
};

struct GatewaySettingsType {
    Q_GADGET
    QML_FOREIGN(ostrelle::GatewaySettings)
    QML_NAMED_ELEMENT(GatewaySettings)
    QML_UNCREATABLE("made by the program")
};

struct ServiceManagerType {
    Q_GADGET
    QML_FOREIGN(ostrelle::ServiceManager)
    QML_NAMED_ELEMENT(ServiceManager)
    QML_UNCREATABLE("made by the program")
};

struct VoiceViewModelType {
    Q_GADGET
    QML_FOREIGN(ostrelle::VoiceViewModel)
    QML_NAMED_ELEMENT(VoiceViewModel)
    QML_UNCREATABLE("made by the program")
};

struct SetupManagerType {
    Q_GADGET
    QML_FOREIGN(ostrelle::SetupManager)
    QML_NAMED_ELEMENT(SetupManager)
    QML_UNCREATABLE("made by the program")
};

struct StatusServerType {
    Q_GADGET
    QML_FOREIGN(ostrelle::StatusServer)
    QML_NAMED_ELEMENT(StatusServer)
    QML_UNCREATABLE("made by the program")
};

// Made for the views that show them.

struct DashboardModelType {
    Q_GADGET
    QML_FOREIGN(ostrelle::DashboardModel)
    QML_ANONYMOUS
};

struct AgentsTopologyViewModelType {
    Q_GADGET
    QML_FOREIGN(ostrelle::AgentsTopologyViewModel)
    QML_NAMED_ELEMENT(AgentsTopologyViewModel)
    QML_UNCREATABLE("made by PanelModels")
};

struct CronViewModelType {
    Q_GADGET
    QML_FOREIGN(ostrelle::CronViewModel)
    QML_NAMED_ELEMENT(CronViewModel)
    QML_UNCREATABLE("made by PanelModels")
};

struct ProjectsViewModelType {
    Q_GADGET
    QML_FOREIGN(ostrelle::ProjectsViewModel)
    QML_NAMED_ELEMENT(ProjectsViewModel)
    QML_UNCREATABLE("made by PanelModels")
};

struct QuickChatVMType {
    Q_GADGET
    QML_FOREIGN(ostrelle::QuickChatVM)
    QML_NAMED_ELEMENT(QuickChatVM)
    QML_UNCREATABLE("made by PanelModels")
};

// Made by SettingsModels for the settings screen.

struct GatewayProfilesType {
    Q_GADGET
    QML_FOREIGN(ostrelle::GatewayProfiles)
    QML_NAMED_ELEMENT(GatewayProfiles)
    QML_UNCREATABLE("made by SettingsModels")
};

struct GatewayPairingType {
    Q_GADGET
    QML_FOREIGN(ostrelle::GatewayPairing)
    QML_NAMED_ELEMENT(GatewayPairing)
    QML_UNCREATABLE("made by SettingsModels")
};

struct TailscalePeersModelType {
    Q_GADGET
    QML_FOREIGN(ostrelle::TailscalePeersModel)
    QML_NAMED_ELEMENT(TailscalePeersModel)
    QML_UNCREATABLE("made by SettingsModels")
};

// The words of the models' states.

struct StatusWordsType {
    Q_GADGET
    QML_FOREIGN(ostrelle::StatusWords)
    QML_NAMED_ELEMENT(StatusWords)
    QML_SINGLETON
};

struct LightType {
    Q_GADGET
    QML_FOREIGN(ostrelle::Light)
    QML_VALUE_TYPE(statusLight)
};

// Parts of the above.

struct SetupCheckType {
    Q_GADGET
    QML_FOREIGN(ostrelle::SetupCheck)
    QML_VALUE_TYPE(setupCheck)
};

struct SetupChecksType {
    Q_GADGET
    QML_FOREIGN(ostrelle::SetupChecks)
    QML_VALUE_TYPE(setupChecks)
};

struct QrCodeType {
    Q_GADGET
    QML_FOREIGN(ostrelle::QrCode)
    QML_ANONYMOUS
};

struct SavedGatewaysModelType {
    Q_GADGET
    QML_FOREIGN(ostrelle::SavedGatewaysModel)
    QML_ANONYMOUS
};

struct ChatMessagesType {
    Q_GADGET
    QML_FOREIGN(ostrelle::ChatMessages)
    QML_ANONYMOUS
};

struct StatusLogType {
    Q_GADGET
    QML_FOREIGN(ostrelle::StatusLog)
    QML_ANONYMOUS
};

} // namespace ostrelle::qml
