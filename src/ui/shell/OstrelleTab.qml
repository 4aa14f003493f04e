import QtQuick
import Ostrelle

// The first tab: the voice agent while it is switched on, the chat in the place that is left, and
// how the gateway can be reached. With large texts the page scrolls.
ScrollPane {
    id: tab

    required property ContentPanel panel

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
        active: tab.panel.serviceManager.voiceEnabled
        visible: voice.active

        sourceComponent: VoiceStatusView {
            viewModel: tab.panel.voiceVM
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
        chatVM: tab.panel.chatVM
        gatewayURL: tab.panel.models.gatewayURL
    }

    Item {
        width: tab.width
        implicitHeight: Theme.pagePadding
    }

    GatewayStatusView {
        id: gateway

        x: Theme.pagePadding
        width: tab.width - 2 * Theme.pagePadding
        viewModel: tab.panel.gatewayVM
        serviceManager: tab.panel.serviceManager
        voiceVM: tab.panel.voiceVM
        statusServerRunning: tab.panel.statusServerRunning
        statusPortTaken: tab.panel.statusPortTaken
    }

    Item {
        width: tab.width
        implicitHeight: Theme.pagePadding
    }
}
