import QtQuick
import Ostrelle

// A dot in a soft light of its own colour, and what it is about.
Row {
    id: status

    required property string label
    // Its word is for those who do not see the colour.
    required property statusLight light

    spacing: Theme.symbolGap
    Accessible.role: Accessible.StaticText
    Accessible.name: status.label
    Accessible.description: status.light.word

    GlowDot {
        anchors.verticalCenter: parent.verticalCenter
        tint: Theme.named(status.light.color)
    }

    Label {
        anchors.verticalCenter: parent.verticalCenter
        text: status.label
        secondary: true
        Accessible.ignored: true
    }
}
