import QtQuick
import Ostrelle

// How to get from a tailnet without certificates to a gateway that is served over HTTPS.
Column {
    id: instructions

    required property SetupManager setupManager

    readonly property string dnsPage: "https://login.tailscale.com/admin/dns"

    spacing: Theme.gap

    Label {
        width: parent.width
        text: "Step 1: Enable MagicDNS + HTTPS Certs"
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
    }

    Explanation {
        width: parent.width
        text: "In your Tailscale DNS settings, enable MagicDNS first, then enable HTTPS Certificates (both on the same page)."
    }

    Flow {
        width: parent.width
        spacing: Theme.gap

        PushButton {
            width: Math.min(implicitWidth, parent.width)
            kind: PushButton.Plain
            text: "Open DNS Settings →"
            color: Theme.teal
            onClicked: Desktop.openPage(instructions.dnsPage)
        }

        PushButton {
            width: Math.min(implicitWidth, parent.width)
            symbol: answer.running ? "checkmark" : "doc.on.doc"
            text: "Copy Link"
            onClicked: {
                Desktop.copy(instructions.dnsPage);
                answer.restart();
            }

            Timer {
                id: answer

                interval: Theme.answerTime
            }
        }
    }

    Label {
        width: parent.width
        text: "Step 2: Configure HTTPS Serve"
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
    }

    Explanation {
        width: parent.width
        text: "After enabling HTTPS above, click here to set up the secure connection."
    }

    CommandNote {
        width: parent.width
        advice: "here: no password is asked for, once you have typed"
        commands: ["sudo tailscale set --operator=$USER"]
    }

    PushButton {
        width: parent.width
        enabled: !instructions.setupManager.isConfiguringTailscale
        busy: instructions.setupManager.isConfiguringTailscale
        text: instructions.setupManager.isConfiguringTailscale ? "Configuring…" : "Configure HTTPS Serve"
        onClicked: instructions.setupManager.configureTailscaleServe()
    }
}
