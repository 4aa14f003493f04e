import QtQuick
import Ostrelle

// One scheduled job; after a tap with what it does.
ExpandableCard {
    id: card

    required property string name
    required property string schedule
    required property string status
    required property bool isEnabled
    required property var lastRun // texts, or undefined
    required property var nextRun
    required property var payload

    readonly property string displayStatus: card.isEnabled ? card.status : "stopped"

    text: card.name
    Accessible.name: card.name + ", " + pill.text

    summary: [
        Item {
            width: parent.width
            height: Math.max(name.height, dot.height, pill.height)

            StatusDot {
                id: dot

                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                status: card.displayStatus
            }

            Label {
                id: name

                anchors.left: dot.right
                anchors.leftMargin: Theme.gap
                anchors.right: pill.left
                anchors.rightMargin: Theme.gap
                anchors.verticalCenter: parent.verticalCenter
                text: card.name
                font.pixelSize: Theme.controlSize
                font.weight: Font.DemiBold
            }

            Pill {
                id: pill

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, parent.width / 2)
                text: card.isEnabled ? card.status.toUpperCase() : "DISABLED"
                tint: card.isEnabled ? Theme.statusColor(card.status) : Theme.grey
            }
        },
        SymbolLine {
            width: parent.width
            symbol: "clock.arrow.circlepath"
            content: card.schedule
        },
        SymbolLine {
            width: parent.width
            visible: card.lastRun !== undefined
            content: "Last: " + card.lastRun
        },
        SymbolLine {
            width: parent.width
            visible: card.nextRun !== undefined
            symbol: "clock"
            content: "Next: " + card.nextRun
        }
    ]

    Column {
        spacing: Theme.smallGap

        Label {
            width: parent.width
            visible: payload.visible
            text: "Payload"
            secondary: true
            font.pixelSize: Theme.smallSize
            font.weight: Font.DemiBold
        }

        SelectableText {
            id: payload

            width: parent.width
            visible: text !== ""
            content: card.payload ?? ""
        }
    }
}
