import QtQuick
import QtQuick.Templates as T
import Ostrelle

// One agent on the canvas: its emoji in a glassy bubble, its name and what it does below. A tap, or
// Return, opens the inspector.
T.AbstractButton {
    id: bubble

    required property string agentId
    required property string name
    required property string status
    required property var progressText // a text, or undefined
    required property string colorName
    required property string defaultEmoji
    required property bool isWorking
    required property point center
    required property real radius
    required property int side
    // Changes when what the user calls the agents may have changed.
    required property int refreshKey
    // It can be seen, so that it may move.
    required property bool animated

    readonly property color color: Theme.named(bubble.colorName)
    readonly property string shownName: appearance.name
    readonly property bool moves: bubble.isWorking && bubble.animated && Theme.motion

    x: Math.round(bubble.center.x - width / 2)
    y: Math.round(bubble.center.y - bubble.radius - Theme.bubbleHalo)
    width: Math.round(2 * (bubble.radius + Theme.bubbleHalo) + 2 * Theme.gap)
    height: texts.y + texts.height
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: bubble.shownName
    Accessible.description: details.text
    Keys.onReturnPressed: bubble.clicked()
    Keys.onEnterPressed: bubble.clicked()

    AgentAppearance {
        id: appearance

        agentId: bubble.agentId
        fallbackName: bubble.name
        fallbackEmoji: bubble.defaultEmoji
        refreshKey: bubble.refreshKey
    }

    background: Item {
        // The pulse
        Rectangle {
            id: halo

            anchors.centerIn: disc
            width: disc.width + 2 * Theme.bubbleHalo
            height: width
            radius: width / 2
            color: Theme.faded(bubble.color, bubble.hovered ? 0.28 : 0.16)

            SequentialAnimation on opacity {
                running: bubble.moves
                loops: Animation.Infinite
                alwaysRunToEnd: true

                NumberAnimation {
                    to: 0.35
                    duration: Theme.bubblePulse
                    easing.type: Easing.InOutQuad
                }
                NumberAnimation {
                    to: 1
                    duration: Theme.bubblePulse
                    easing.type: Easing.InOutQuad
                }
            }
        }

        Rectangle {
            id: disc

            x: Math.round((bubble.width - width) / 2)
            y: Theme.bubbleHalo
            width: Math.round(2 * bubble.radius)
            height: width
            radius: width / 2
            border.width: bubble.visualFocus ? 3 : bubble.isWorking ? 2 : 1
            border.color: bubble.visualFocus ? Theme.textPrimary : bubble.color
            gradient: Gradient {
                GradientStop {
                    position: 0
                    color: Qt.tint(Theme.background, Theme.faded(bubble.color, 0.22))
                }
                GradientStop {
                    position: 1
                    color: Qt.tint(Theme.background, Theme.faded(bubble.color, 0.40))
                }
            }

            Text {
                anchors.centerIn: parent
                text: appearance.emoji
                textFormat: Text.PlainText
                font.family: Theme.emojiFont
                font.pixelSize: Math.round(bubble.radius * 0.72)
                width: Math.min(implicitWidth, parent.width * 0.86)
                fontSizeMode: Text.HorizontalFit
                minimumPixelSize: 6
                horizontalAlignment: Text.AlignHCenter
                color: Theme.textPrimary
                Accessible.ignored: true
            }
        }

        ProcessingRing {
            anchors.centerIn: disc
            width: disc.width + Theme.bubbleHalo
            height: width
            color: bubble.color
            visible: bubble.isWorking
            running: bubble.moves
        }
    }

    contentItem: Item {
        Column {
            id: texts

            y: disc.height + Theme.bubbleHalo + Theme.smallGap
            width: bubble.width

            Label {
                width: parent.width
                text: bubble.shownName
                font.pixelSize: Theme.smallSize
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignHCenter
                Accessible.ignored: true
            }

            Label {
                id: details

                width: parent.width
                visible: bubble.side !== 0
                text: bubble.progressText !== undefined
                    ? bubble.status + " · " + bubble.progressText : bubble.status
                secondary: true
                font.pixelSize: Theme.captionSize
                horizontalAlignment: Text.AlignHCenter
                Accessible.ignored: true
            }
        }
    }
}
