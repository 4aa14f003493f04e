import QtQuick
import Ostrelle

// One prerequisite: whether it is there, and what stands in for it.
Row {
    id: row

    required property string label
    required property bool ok
    property bool optional: false
    property string note: ""

    readonly property string remark: !row.ok && row.optional ? "(optional)" : row.note

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
        width: row.width - icon.width - row.spacing
        spacing: row.spacing

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
