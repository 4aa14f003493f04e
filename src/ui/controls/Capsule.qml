import QtQuick
import Ostrelle

// A word on a capsule of its own colour.
Rectangle {
    id: capsule

    required property string text
    required property color tint
    // A screen reader hears it; false where what it stands on says the word.
    property bool isHeard: true

    implicitWidth: label.implicitWidth + 2 * Theme.gap
    implicitHeight: label.implicitHeight + Theme.smallGap
    radius: height / 2
    color: Theme.faded(capsule.tint, Theme.capsuleOpacity)

    Label {
        id: label

        anchors.centerIn: parent
        width: Math.min(implicitWidth, capsule.width - Theme.gap)
        text: Texts.oneLine(capsule.text)
        color: Theme.legible(capsule.tint, Theme.capsuleOpacity)
        font.pixelSize: Theme.captionSize
        font.weight: Font.DemiBold
        Accessible.ignored: !capsule.isHeard
    }
}
