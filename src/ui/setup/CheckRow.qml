import QtQuick
import Ostrelle

// One prerequisite: whether it is there, what stands in for it, and what puts it there.
Column {
    id: row

    required property string label
    required property bool ok
    property bool optional: false
    property string note: ""
    property string advice: ""
    property var commands: []

    readonly property string remark: !row.ok && row.optional ? "(optional)" : row.note

    Row {
        id: state

        width: parent.width
        spacing: Theme.gap
        Accessible.role: Accessible.StaticText
        Accessible.name: row.label + (row.remark === "" ? "" : " " + row.remark)
        Accessible.description: row.ok ? "there" : "missing"

        Symbol {
            id: icon

            anchors.verticalCenter: parent.verticalCenter
            name: row.ok ? "checkmark.circle.fill" : row.optional ? "minus.circle" : "xmark.circle"
            color: row.ok ? Theme.green : row.optional ? Theme.yellow : Theme.red
        }

        Flow {
            anchors.verticalCenter: parent.verticalCenter
            width: state.width - icon.width - state.spacing
            spacing: state.spacing

            Label {
                width: Math.min(implicitWidth, parent.width)
                text: row.label
                wrapMode: Text.Wrap
                Accessible.ignored: true
            }

            Label {
                width: Math.min(implicitWidth, parent.width)
                visible: row.remark !== ""
                text: row.remark
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
        active: !row.ok
        visible: mending.active
        sourceComponent: CommandNote {
            advice: row.advice
            commands: row.commands
        }
    }
}
