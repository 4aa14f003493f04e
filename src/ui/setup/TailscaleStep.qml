import QtQuick
import Ostrelle

// The second step: the gateway becomes reachable over HTTPS within the user's own network.
SetupSection {
    id: section

    required property SetupManager setupManager

    title: "2. Tailscale HTTPS"
    step: 2

    CheckRow {
        width: parent.width
        check: section.setupManager.checks.loggedIn
    }

    CheckRow {
        width: parent.width
        check: section.setupManager.checks.serve
    }

    Column {
        width: parent.width
        visible: !section.setupManager.tailscaleLoggedIn
        spacing: Theme.gap

        Explanation {
            width: parent.width
            text: "Open the Tailscale app and sign in to your tailnet, then tap Re-check."
        }

        PushButton {
            width: Math.min(implicitWidth, parent.width)
            text: "Open Tailscale"
            onClicked: Desktop.openIfThere("/Applications/Tailscale.app")
        }
    }

    ServeInstructions {
        width: parent.width
        visible: section.setupManager.tailscaleLoggedIn && !section.setupManager.tailscaleServeRunning
        setupManager: section.setupManager
    }

    Explanation {
        width: parent.width
        visible: section.setupManager.tailscaleLoggedIn && section.setupManager.tailscaleServeRunning
        text: "✓ Devices on your tailnet can reach this gateway securely."
        color: Theme.green
    }
}
