import QtQuick
import Ostrelle

// A numbered step of the setup. Its body is hidden as long as its turn has not come.
Rectangle {
    id: section

    required property string title
    required property int step
    required property int currentStep
    default property alias content: body.data

    readonly property bool isDone: section.step < section.currentStep
    readonly property bool isCurrent: section.step === section.currentStep
    readonly property bool isLater: section.step > section.currentStep

    readonly property color tint: section.isDone ? Theme.green
        : section.isCurrent ? Theme.teal : Theme.faded(Theme.textSecondary, 0.4)

    implicitHeight: heading.height + (section.isLater ? 0 : Theme.gap + body.height) + 2 * Theme.setupPadding
    radius: Theme.smallRadius
    color: section.isLater ? "transparent" : Theme.faded(section.tint, 0.06)

    Symbol {
        anchors.left: parent.left
        anchors.leftMargin: Theme.setupPadding
        anchors.verticalCenter: heading.verticalCenter
        name: section.isDone ? "checkmark.circle.fill" : section.isCurrent ? "circle.dotted" : "circle"
        color: section.tint
    }

    Label {
        id: heading

        anchors.left: body.left
        anchors.right: body.right
        anchors.top: parent.top
        anchors.topMargin: Theme.setupPadding
        text: section.title
        color: section.isLater ? section.tint : Theme.textPrimary
        font.pixelSize: Theme.controlSize
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
        Accessible.role: Accessible.Heading
        Accessible.description: section.isDone ? "done" : section.isCurrent ? "current step" : "later"
    }

    Column {
        id: body

        anchors.left: parent.left
        anchors.leftMargin: Theme.setupPadding + Theme.setupIndent
        anchors.right: parent.right
        anchors.rightMargin: Theme.setupPadding
        anchors.top: heading.bottom
        anchors.topMargin: Theme.gap
        visible: !section.isLater
        spacing: Theme.gap
    }
}
