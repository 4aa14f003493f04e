import QtQuick
import Ostrelle

// The panel's content: the tabs, the selected tab's view, and the bar with the quit action. A tab's
// content, and with it its model, is made when the tab is selected and lasts until another one is.
FocusScope {
    id: panel

    required property PanelModels models
    required property GatewayViewModel gatewayVM
    required property VoiceViewModel voiceVM
    required property ServiceManager serviceManager
    required property SetupManager setupManager
    required property bool statusServerRunning
    required property bool statusPortTaken
    required property bool projectTrackingEnabled
    // While this is false the selected tab has no content. The selection and the chat stay.
    required property bool active
    property int selectedTab: 0

    readonly property QuickChatVM chatVM: panel.models.makeChat(panel)
    // What the selected tab's content left when it went, for when it is made anew.
    property var kept: undefined

    // By their files, so that only what the selected one shows is loaded. Each is given the panel.
    readonly property list<string> tabs: [
        "OstrelleTab.qml", "ProjectsTab.qml", "AgentsTab.qml", "CronTab.qml", "SettingsTab.qml"
    ]

    // Closes what the selected tab asks; false when it asks nothing, or is not seen.
    function closeQuestion(): bool {
        return panel.visible && (content.item?.closeQuestion?.() ?? false);
    }

    // Whoever has switched it off, ostrellectl too.
    onProjectTrackingEnabledChanged: {
        if (!panel.projectTrackingEnabled && panel.selectedTab === 1) {
            panel.kept = undefined; // of a closed panel
            panel.selectedTab = 0;
        }
    }

    // Wherever the keyboard is.
    Keys.onPressed: event => event.accepted = content.item.turnPage(event.key)

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

        readonly property string wanted: panel.active ? panel.tabs[panel.selectedTab] ?? "" : ""

        anchors.top: divider.bottom
        anchors.bottom: lowerDivider.top
        width: panel.width
        onWantedChanged: {
            if (content.wanted === "") {
                panel.kept = content.item?.keepsake?.();
            }
            content.setSource(content.wanted, {"panel": panel});
            if (content.item && panel.kept) {
                content.item.restore(panel.kept);
                panel.kept = undefined;
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
        visible: content.wanted !== ""
    }
}
