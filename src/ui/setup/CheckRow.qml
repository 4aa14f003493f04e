import QtQuick
import Ostrelle

// One prerequisite: whether it is there, what stands in for it, and what puts it there.
Column {
    id: row

    required property setupCheck check

    Row {
        id: state

        width: parent.width
        spacing: Theme.gap
        Accessible.role: Accessible.StaticText
        Accessible.name: row.check.label + (row.check.note === "" ? "" : " " + row.check.note)
        Accessible.description: row.check.ok ? "there" : "missing"

        Symbol {
            id: icon

            anchors.verticalCenter: parent.verticalCenter
            name: row.check.ok ? "checkmark.circle.fill" : "xmark.circle"
            color: row.check.ok ? Theme.green : Theme.red
        }

        Flow {
            anchors.verticalCenter: parent.verticalCenter
            width: state.width - icon.width - state.spacing
            spacing: state.spacing

            Label {
                width: Math.min(implicitWidth, parent.width)
                text: row.check.label
                wrapMode: Text.Wrap
                Accessible.ignored: true
            }

            Label {
                width: Math.min(implicitWidth, parent.width)
                visible: row.check.note !== ""
                text: row.check.note
                secondary: true
                wrapMode: Text.Wrap
                Accessible.ignored: true
            }
        }
    }

    // Under the label.
    Loader {
        id: mending

        anchors.left: parent.left
        anchors.leftMargin: icon.width + state.spacing
        width: parent.width - icon.width - state.spacing
        active: !row.check.ok
        visible: mending.active
        sourceComponent: CommandNote {
            advice: row.check.advice
            commands: row.check.commands
        }
    }
}
