import QtQuick
import Ostrelle

// A dot in a soft light of its own colour, and what it is about.
Row {
    id: status

    required property string label
    required property color color
    // What the colour says, for those who do not see it.
    required property string meaning

    spacing: Theme.smallGap + 2
    Accessible.role: Accessible.StaticText
    Accessible.name: status.label
    Accessible.description: status.meaning

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: 2 * Theme.gap
        height: width
        radius: width / 2
        color: Theme.faded(status.color, 0.16)

        Rectangle {
            anchors.centerIn: parent
            width: Theme.padding
            height: width
            radius: width / 2
            color: Theme.faded(status.color, 0.2)
        }

        Rectangle {
            anchors.centerIn: parent
            width: Theme.gap
            height: width
            radius: width / 2
            color: status.color
        }
    }

    Label {
        anchors.verticalCenter: parent.verticalCenter
        text: status.label
        secondary: true
        Accessible.ignored: true
    }
}
