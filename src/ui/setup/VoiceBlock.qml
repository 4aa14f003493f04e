import QtQuick
import Ostrelle

// The voice agent's parts; the closing row installs them.
Card {
    id: block

    required property SetupManager setupManager

    Column {
        width: block.availableWidth
        spacing: Theme.gap

        CheckRow {
            width: parent.width
            label: "Config file"
            ok: block.setupManager.hasConfig
        }

        CheckRow {
            width: parent.width
            label: "TTS Models"
            ok: block.setupManager.hasModels
        }

        CheckRow {
            width: parent.width
            label: "Python venv"
            ok: block.setupManager.hasVenv
        }

        Explanation {
            width: parent.width
            visible: block.setupManager.hasConfig && block.setupManager.hasModels && block.setupManager.hasVenv
            text: "✓ Voice agent ready."
            color: Theme.green
        }
    }
}
