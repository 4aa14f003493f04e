import QtQuick
import Ostrelle

// All that the panel's window shows: the setup sheet while that is called for, else the tabs.
FocusScope {
    id: root

    required property PanelModels models
    required property GatewayViewModel gatewayVM
    required property VoiceViewModel voiceVM
    required property ServiceManager serviceManager
    required property SetupManager setupManager
    required property StatusServer statusServer
    // As it is when the panel is made.
    required property bool projectTrackingEnabled
    // While this is false nothing is held but what the user would miss.
    property bool active: true
    property bool motion: true
    property real textScale: 1
    // Whether what is behind the window may shine through.
    property bool translucent: false

    // The window has a frame of its own.
    property bool framed: false

    // The user wants the panel closed.
    signal closeRequested

    Accessible.role: Accessible.Pane
    Accessible.name: "Ostrelle"
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    // Wherever the keyboard is: what is asked is answered with no before the panel closes.
    Keys.onEscapePressed: {
        if (!content.closeQuestion()) {
            root.closeRequested();
        }
    }

    Binding {
        target: Theme
        property: "motion"
        value: root.motion
    }

    Binding {
        target: Theme
        property: "textScale"
        value: root.textScale
    }

    Rectangle {
        anchors.fill: parent
        color: setup.isShown ? Theme.sheet : root.translucent ? Theme.material : Theme.background
        radius: root.framed ? 0 : Theme.radius
        border.color: root.framed ? "transparent" : Theme.hairline
    }

    // Also after the user has switched it in the panel itself.
    onProjectTrackingEnabledChanged: content.projectTrackingEnabled = root.projectTrackingEnabled

    ContentPanel {
        id: content

        anchors.fill: parent
        focus: !setup.isShown
        visible: !setup.isShown
        active: root.active && !setup.isShown
        models: root.models
        gatewayVM: root.gatewayVM
        voiceVM: root.voiceVM
        serviceManager: root.serviceManager
        setupManager: root.setupManager
        statusServerRunning: root.statusServer.running
        statusPortTaken: root.statusServer.portTaken
        projectTrackingEnabled: root.projectTrackingEnabled
    }

    // By its file, so that it is loaded only when it is needed.
    Loader {
        id: setup

        readonly property string wanted: root.setupManager.showSetup ? "../setup/SetupSheet.qml" : ""
        readonly property bool isShown: setup.wanted !== ""

        anchors.fill: parent
        focus: setup.isShown
        onWantedChanged: setup.setSource(setup.wanted, {"setupManager": root.setupManager})
    }

    Connections {
        target: setup.item

        function onDone() {
            root.setupManager.showSetup = false;
        }
    }
}
