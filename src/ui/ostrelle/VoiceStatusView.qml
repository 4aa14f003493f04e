import QtQuick
import Ostrelle

// The voice agent's row: what it does, and its controls.
Item {
    id: view

    required property VoiceViewModel viewModel
}
