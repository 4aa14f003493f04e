import QtQuick
import Ostrelle

// The buttons that look again, install the voice agent's parts, and end the setup.
Flow {
    id: row

    required property SetupManager setupManager

    // The last run has left nothing to try again.
    readonly property bool isFinished: {
        const setup = row.setupManager;
        return setup.isComplete && !setup.isRunning && setup.hasConfig && setup.hasModels && setup.hasVenv;
    }

    // What is left of the line when all buttons stand in it.
    readonly property real slack: row.width - recheck.width - 2 * row.spacing
        - (doneButton.visible ? doneButton.width : skip.width + finish.width + row.spacing)

    signal done

    spacing: Theme.gap

    PushButton {
        id: recheck

        width: Math.min(implicitWidth, row.width)
        text: "Re-check"
        onClicked: row.setupManager.runChecks()
    }

    Item {
        width: Math.max(0, row.slack)
        height: 1
    }

    PushButton {
        id: skip

        width: Math.min(implicitWidth, row.width)
        visible: !row.isFinished
        kind: PushButton.Plain
        text: "Skip"
        color: Theme.textSecondary
        onClicked: row.done()
    }

    PushButton {
        id: finish

        width: Math.min(implicitWidth, row.width)
        visible: !row.isFinished
        kind: PushButton.Prominent
        enabled: !row.setupManager.isRunning
        busy: row.setupManager.isRunning
        text: "Install Voice + Finish"
        onClicked: row.setupManager.run()
    }

    PushButton {
        id: doneButton

        width: Math.min(implicitWidth, row.width)
        visible: row.isFinished
        kind: PushButton.Prominent
        text: "Done"
        onClicked: row.done()
    }
}
