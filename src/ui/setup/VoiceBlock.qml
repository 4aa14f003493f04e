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
            check: block.setupManager.checks.config
        }

        CheckRow {
            width: parent.width
            check: block.setupManager.checks.models
        }

        CheckRow {
            width: parent.width
            check: block.setupManager.checks.venv
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
