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

    readonly property string lastText: card.lastRun === undefined ? "" : "Last: " + card.lastRun
    readonly property string nextText: card.nextRun === undefined ? "" : "Next: " + card.nextRun
    readonly property statusLight light: StatusWords.job(card.isEnabled, card.status)
    readonly property string displayStatus: card.isEnabled ? card.status : "stopped"

    text: card.name
    opens: (card.payload ?? "") !== ""
    details: [card.schedule, card.lastText, card.nextText].filter(each => each !== "").join(", ")
    Accessible.name: Texts.oneLine(card.name) + ", " + Texts.oneLine(pill.text)

    summary: [
        Item {
            width: parent.width
            height: Math.max(name.height, dot.height, pill.height)

            StatusDot {
                id: dot

                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                status: card.displayStatus
                Accessible.ignored: true
            }

            Label {
                id: name

                anchors.left: dot.right
                anchors.leftMargin: Theme.gap
                anchors.right: pill.left
                anchors.rightMargin: Theme.gap
                anchors.verticalCenter: parent.verticalCenter
                text: card.name
                Accessible.ignored: true
                font.pixelSize: Theme.controlSize
                font.weight: Font.DemiBold
            }

            Pill {
                id: pill

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, parent.width / 2)
                isHeard: false
                text: card.light.word
                tint: Theme.named(card.light.color)
            }
        },
        SymbolLine {
            width: parent.width
            symbol: "clock.arrow.circlepath"
            content: card.schedule
        },
        SymbolLine {
            width: parent.width
            visible: content !== ""
            content: card.lastText
        },
        SymbolLine {
            width: parent.width
            visible: content !== ""
            symbol: "clock"
            content: card.nextText
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
