pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// One project; after a tap with its workstreams.
ExpandableCard {
    id: card

    required property string name
    required property string description
    required property string status
    required property real progress
    required property QtObject workstreams // a list model of them
    required property int workstreamCount

    more: card.workstreamCount + " workstreams"
    opens: card.workstreamCount > 0
    details: Theme.shortened(card.description)
    text: card.name
    Accessible.name: Texts.oneLine(card.name) + ", " + Texts.oneLine(card.status) + ", " + card.progress + "%"

    summary: [
        Item {
            width: parent.width
            height: Math.max(name.height, dot.height)

            StatusDot {
                id: dot

                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                status: card.status
                Accessible.ignored: true
            }

            Label {
                id: name

                anchors.left: dot.right
                anchors.leftMargin: Theme.gap
                anchors.right: percent.left
                anchors.rightMargin: Theme.gap
                anchors.verticalCenter: parent.verticalCenter
                text: card.name
                Accessible.ignored: true
                font.pixelSize: Theme.controlSize
                font.weight: Font.DemiBold
            }

            Label {
                id: percent

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                text: card.progress + "%"
                color: Theme.teal
                Accessible.ignored: true
                font.weight: Font.DemiBold
            }
        },
        Label {
            width: parent.width
            visible: text !== ""
            text: card.details
            Accessible.ignored: true
            secondary: true
            wrapMode: Text.Wrap
        },
        ProgressLine {
            width: parent.width
            progress: card.progress
            tint: Theme.statusColor(card.status)
        }
    ]

    Column {
        id: list

        spacing: Theme.gap

        Repeater {
            model: card.workstreams

            WorkstreamRow {
                width: list.width
            }
        }
    }
}
