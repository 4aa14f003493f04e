import QtQuick
import Ostrelle

// The first-run wizard, driven by the setup manager.
FocusScope {
    id: sheet

    required property SetupManager setupManager

    readonly property int currentStep: {
        const setup = sheet.setupManager;
        if (!setup.hasDuskrell || !setup.hasTailscale || !setup.hasXcodeCLT) {
            return 1;
        }
        if (!setup.tailscaleLoggedIn || !setup.tailscaleServeRunning) {
            return 2;
        }
        return setup.hasAgent && setup.hasGatewayToken ? 4 : 3;
    }

    readonly property real columnWidth: sheet.width - 2 * Theme.pagePadding

    readonly property bool isInSight: sheet.visible && sheet.Window.visibility !== Window.Hidden

    // The user wants the sheet closed.
    signal done

    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: title.text

    // No secret that was typed waits for the next setup.
    function finish() {
        sheet.forgetPassword();
        sheet.setupManager.gatewayTokenInput = "";
        sheet.done();
    }

    function forgetPassword() {
        if (sheet.setupManager) {
            sheet.setupManager.sudoPassword = "";
        }
    }

    onIsInSightChanged: {
        if (!sheet.isInSight) {
            sheet.forgetPassword();
        }
    }
    Component.onDestruction: sheet.forgetPassword()
    Keys.onPressed: event => event.accepted = steps.turnPage(event.key)

    ScrollPane {
        id: steps

        anchors.left: parent.left
        anchors.right: parent.right // the bar stands in the page's margin
        anchors.top: parent.top
        anchors.bottom: log.visible ? log.top : closing.top
        anchors.bottomMargin: Theme.padding

        Column {
            x: Theme.pagePadding
            width: sheet.columnWidth
            spacing: Theme.gap

            Label {
                id: title

                width: parent.width
                topPadding: 2 * Theme.gap
                text: "OSTRELLE Setup"
                font.pixelSize: Theme.titleSize
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
                Accessible.role: Accessible.Heading
            }

            Label {
                width: parent.width
                bottomPadding: Theme.gap
                text: "Let’s get everything running."
                secondary: true
                wrapMode: Text.Wrap
            }

            PrerequisitesStep {
                width: parent.width
                currentStep: sheet.currentStep
                setupManager: sheet.setupManager
            }

            TailscaleStep {
                width: parent.width
                visible: sheet.setupManager.hasTailscale
                currentStep: sheet.currentStep
                setupManager: sheet.setupManager
            }

            GatewayStep {
                width: parent.width
                visible: sheet.setupManager.hasDuskrell
                currentStep: sheet.currentStep
                setupManager: sheet.setupManager
            }

            VoiceBlock {
                width: parent.width
                setupManager: sheet.setupManager
            }
        }
    }

    // Outside what scrolls: progress is seen wherever the user has scrolled to.
    ProgressLog {
        id: log

        anchors.bottom: closing.top
        anchors.bottomMargin: Theme.padding
        x: Theme.pagePadding
        width: sheet.columnWidth
        visible: log.count > 0
        height: Math.min(implicitHeight, sheet.height / 4)
        setupManager: sheet.setupManager
    }

    ClosingRow {
        id: closing

        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.padding
        x: Theme.pagePadding
        width: sheet.columnWidth
        setupManager: sheet.setupManager
        onDone: sheet.finish()
    }
}
