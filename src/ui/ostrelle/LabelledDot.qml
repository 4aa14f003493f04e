import QtQuick
import Ostrelle

// A dot in a soft light of its own colour, and what it is about.
Row {
    id: status

    required property string label
    required property color color
    // What the colour says, for those who do not see it.
    required property string meaning

    spacing: Theme.symbolGap
    Accessible.role: Accessible.StaticText
    Accessible.name: status.label
    Accessible.description: status.meaning

    GlowDot {
        anchors.verticalCenter: parent.verticalCenter
        tint: status.color
    }

    Label {
        anchors.verticalCenter: parent.verticalCenter
        text: status.label
        secondary: true
        Accessible.ignored: true
    }
}
