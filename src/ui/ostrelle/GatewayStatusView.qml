import QtQuick
import Ostrelle

// How the gateway can be reached, in a few lines.
Item {
    id: view

    required property GatewayViewModel viewModel
    required property ServiceManager serviceManager
    property VoiceViewModel voiceVM: null
    required property bool statusServerRunning
}
