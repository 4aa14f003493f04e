import QtQuick
import Ostrelle

// The panel's content: the tabs, the selected tab's view, and the bar with the quit action. A tab's
// content, and with it its model, is made when the tab is selected and lasts until another one is.
FocusScope {
    id: panel

    required property GatewayViewModel gatewayVM
    required property VoiceViewModel voiceVM
    required property ServiceManager serviceManager
    required property SetupManager setupManager
    required property bool statusServerRunning
    property bool projectTrackingEnabled: true
    property int selectedTab: 0
    // While this is false the selected tab has no content. The selection and the chat stay.
    property bool active: true

    readonly property QuickChatVM chatVM: QuickChatVM {}

    // Closes what the selected tab asks; false when it asks nothing, or is not seen.
    function closeQuestion(): bool {
        return panel.visible && (content.item?.closeQuestion?.() ?? false);
    }

    TabRow {
        id: tabs

        width: panel.width
        selectedTab: panel.selectedTab
        projectTrackingEnabled: panel.projectTrackingEnabled
        onChosen: index => panel.selectedTab = index
    }

    Divider {
        id: divider

        anchors.top: tabs.bottom
        width: panel.width
    }

    Loader {
        id: content

        anchors.top: divider.bottom
        anchors.bottom: lowerDivider.top
        width: panel.width
        active: panel.active
        sourceComponent: {
            switch (panel.selectedTab) {
            case 0:
                return ostrelleTab;
            case 1:
                return projectsTab;
            case 2:
                return agentsTab;
            case 3:
                return cronTab;
            case 4:
                return settingsTab;
            default:
                return null;
            }
        }
    }

    Divider {
        id: lowerDivider

        anchors.bottom: actions.top
        width: panel.width
        visible: actions.visible
    }

    ActionsBar {
        id: actions

        anchors.bottom: panel.bottom
        width: panel.width
        visible: content.sourceComponent !== null
    }

    Component {
        id: ostrelleTab

        OstrelleTab {
            gatewayVM: panel.gatewayVM
            voiceVM: panel.voiceVM
            serviceManager: panel.serviceManager
            chatVM: panel.chatVM
            statusServerRunning: panel.statusServerRunning
        }
    }

    Component {
        id: projectsTab

        ProjectsView {
            viewModel: ProjectsViewModel {
            }
        }
    }

    Component {
        id: agentsTab

        AgentsView {
        }
    }

    Component {
        id: cronTab

        CronView {
            viewModel: CronViewModel {
            }
        }
    }

    Component {
        id: settingsTab

        GatewaySettingsView {
            gatewayVM: panel.gatewayVM
            serviceManager: panel.serviceManager
            setupManager: panel.setupManager
            projectTrackingEnabled: panel.projectTrackingEnabled
            onProjectTrackingToggled: enabled => panel.projectTrackingEnabled = enabled
        }
    }
}
