import QtQuick
import Ostrelle

// One agent on the canvas: its emoji in a glassy bubble, its name and what it does below. A tap, or
// Return, opens the inspector.
BaseButton {
    id: bubble

    required property AgentsTopologyViewModel viewModel
    required property var node // an AgentNode
    required property point center
    required property real radius
    required property int side // of the spine: -1, or 1, or 0 on it
    // Changes when what the user calls the agents may have changed.
    required property int refreshKey
    // How much of its light the bubble has given up: 0 at rest.
    required property real pulse
    required property real processingRing

    readonly property real size: Math.round(2 * bubble.radius)
    readonly property color color: Theme.named(bubble.node.colorName)
    readonly property string shownName: appearance.name
    // Between one agent and the next below it is as much room as a radius. Larger texts than two
    // lines of it leave room for the name alone.
    readonly property bool isDetailed: bubble.side !== 0 && Theme.smallSize <= 0.5 * bubble.radius

    x: Math.round(bubble.center.x - width / 2)
    y: Math.round(bubble.center.y - bubble.radius)
    width: bubble.size + 2 * Theme.bubbleHalo + 2 * Theme.gap
    height: bubble.size + Theme.smallGap + texts.height
    Accessible.name: Texts.oneLine(bubble.shownName)
    Accessible.description: Texts.oneLine(details.text)

    function fitting(size: int, share: real): int {
        return Math.min(size, Math.floor(share * bubble.radius));
    }

    AgentAppearance {
        id: appearance

        viewModel: bubble.viewModel
        agentId: bubble.node.id
        fallbackName: bubble.node.name
        fallbackEmoji: bubble.node.defaultEmoji
        refreshKey: bubble.refreshKey
    }

    background: Item {
        Rectangle {
            anchors.centerIn: disc
            width: disc.width + 2 * Theme.bubbleHalo
            height: width
            radius: width / 2
            color: Theme.faded(bubble.color, bubble.hovered ? 0.28 : 0.16)
            opacity: 1 - 0.65 * bubble.pulse
        }

        AgentDisc {
            id: disc

            x: Math.round((bubble.width - width) / 2)
            width: bubble.size
            height: width
            upperColor: Qt.tint(Theme.background, Theme.faded(bubble.color, 0.22))
            lowerColor: Qt.tint(Theme.background, Theme.faded(bubble.color, 0.40))
            rimColor: bubble.visualFocus ? Theme.textPrimary : bubble.color
            rimWidth: bubble.visualFocus ? 3 : bubble.node.isWorking ? 2 : 1
            emoji: appearance.emoji
            emojiFont: Theme.emojiFont
            textColor: Theme.textPrimary
        }

        Lazy {
            anchors.centerIn: disc
            width: disc.width + Theme.bubbleHalo
            height: width
            active: bubble.node.isWorking

            ProcessingRing {
                color: bubble.color
                phase: bubble.processingRing
            }
        }
    }

    contentItem: Item {
        Column {
            id: texts

            y: bubble.size + Theme.smallGap
            width: bubble.width

            Label {
                width: parent.width
                text: bubble.shownName
                font.pixelSize: bubble.fitting(Theme.smallSize, bubble.isDetailed ? 0.36 : 0.7)
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignHCenter
                Accessible.ignored: true
            }

            Label {
                id: details

                width: parent.width
                visible: bubble.isDetailed
                text: bubble.node.progressText !== undefined
                    ? bubble.node.status + " · " + bubble.node.progressText : bubble.node.status
                secondary: true
                font.pixelSize: bubble.fitting(Theme.captionSize, 0.33)
                horizontalAlignment: Text.AlignHCenter
                Accessible.ignored: true
            }
        }
    }
}
