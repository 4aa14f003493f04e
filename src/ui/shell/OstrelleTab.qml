import QtQuick
import Ostrelle

// The first tab: the voice agent while it is switched on, the chat in the place that is left, and
// how the gateway can be reached. With large texts the page scrolls.
ScrollPane {
    id: tab

    required property GatewayViewModel gatewayVM
    required property VoiceViewModel voiceVM
    required property ServiceManager serviceManager
    required property QuickChatVM chatVM
    required property bool statusServerRunning

    readonly property Configuration configuration: Configuration {
        watchedURL: tab.gatewayVM.gatewayURL
    }
    readonly property real others: (voice.active ? voice.height + divider.height : 0)
        + gateway.height + 3 * Theme.pagePadding

    spacing: 0

    Item {
        width: tab.width
        implicitHeight: Theme.pagePadding
    }

    Loader {
        id: voice

        x: Theme.pagePadding
        width: tab.width - 2 * Theme.pagePadding
        active: tab.serviceManager.voiceEnabled
        visible: voice.active

        sourceComponent: VoiceStatusView {
            viewModel: tab.voiceVM
        }
    }

    Item {
        id: divider

        width: tab.width
        visible: voice.active
        implicitHeight: 2 * Theme.padding + 1

        Divider {
            anchors.centerIn: parent
            width: parent.width - 2 * Theme.pagePadding
        }
    }

    QuickChatPanel {
        x: Theme.pagePadding
        width: tab.width - 2 * Theme.pagePadding
        height: Math.max(implicitHeight, tab.height - tab.others)
        chatVM: tab.chatVM
        gatewayURL: tab.configuration.gatewayURL
    }

    Item {
        width: tab.width
        implicitHeight: Theme.pagePadding
    }

    GatewayStatusView {
        id: gateway

        x: Theme.pagePadding
        width: tab.width - 2 * Theme.pagePadding
        viewModel: tab.gatewayVM
        serviceManager: tab.serviceManager
        voiceVM: tab.voiceVM
        statusServerRunning: tab.statusServerRunning
    }

    Item {
        width: tab.width
        implicitHeight: Theme.pagePadding
    }
}
