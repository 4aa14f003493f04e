import QtQuick
import Ostrelle

// The voice agent's parts; the closing row installs them.
Card {
    id: block

    required property SetupManager setupManager

    readonly property string advice: block.setupManager.voiceCommand === ""
        ? "here: “Install Voice + Finish” below" : "here: this first, then “Install Voice + Finish” below"

    Column {
        width: block.availableWidth
        spacing: Theme.gap

        CheckRow {
            width: parent.width
            label: "Config file"
            ok: block.setupManager.hasConfig
            advice: "here: “Install Voice + Finish” below"
        }

        CheckRow {
            width: parent.width
            label: "TTS Models"
            ok: block.setupManager.hasModels
            advice: block.advice
            commands: [block.setupManager.voiceCommand]
        }

        CheckRow {
            width: parent.width
            label: "Python venv"
            ok: block.setupManager.hasVenv
            advice: block.advice
            commands: [block.setupManager.hasModels ? block.setupManager.voiceCommand : ""]
        }

        Explanation {
            width: parent.width
            visible: block.setupManager.hasConfig && block.setupManager.hasModels && block.setupManager.hasVenv
                && !block.setupManager.isRunning // which says so before it knows
            text: "✓ Voice agent ready."
            color: Theme.green
        }
    }
}
