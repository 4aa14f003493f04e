import QtQuick
import Ostrelle

// What can be done with a voice agent that runs. Its buttons share the width that it is given.
Row {
    id: controls

    required property VoiceViewModel viewModel
    required property real availableWidth

    readonly property real buttonWidth: Math.min(4 * Theme.titleSize, controls.availableWidth / 3)

    readonly property VoiceButton firstButton: mute

    VoiceButton {
        id: mute

        width: controls.buttonWidth
        symbol: controls.viewModel.isMuted ? "mic.slash.fill" : "mic.fill"
        text: controls.viewModel.isMuted ? "Unmute" : "Mute"
        onClicked: controls.viewModel.toggleMute()
    }

    VoiceButton {
        width: controls.buttonWidth
        symbol: "stop.fill"
        text: "Stop"
        onClicked: controls.viewModel.stop()
    }

    VoiceButton {
        width: controls.buttonWidth
        symbol: "arrow.clockwise"
        text: "Restart"
        onClicked: controls.viewModel.restart()
    }
}
