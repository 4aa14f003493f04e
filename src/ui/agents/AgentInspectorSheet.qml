import QtQuick
import Ostrelle

// What is known of one agent, and what the user wants to call it.
FocusScope {
    id: sheet

    // As it was when the sheet was opened.
    required property string agentId
    required property string agentName
    required property string defaultEmoji
    property var detail: undefined // texts, or undefined
    property var modelName: undefined
    property var progressText: undefined

    // Something was saved or reset.
    signal changed
    signal dismissed

    Accessible.role: Accessible.Dialog
    Accessible.name: title.text
    Keys.onEscapePressed: sheet.dismissed()

    function save() {
        appearance.save(name.text, emoji.text);
        sheet.changed();
        sheet.dismissed();
    }

    function reset() {
        appearance.reset();
        sheet.changed();
        sheet.dismissed();
    }

    AgentAppearance {
        id: appearance

        agentId: sheet.agentId
        fallbackName: sheet.agentName
        fallbackEmoji: sheet.defaultEmoji
    }

    // Takes the clicks that are meant for nothing below.
    Rectangle {
        anchors.fill: parent
        color: Theme.sheet
        radius: Theme.radius

        MouseArea {
            anchors.fill: parent
            hoverEnabled: true
        }
    }

    Label {
        id: title

        anchors.left: parent.left
        anchors.leftMargin: Theme.pagePadding
        anchors.right: close.left
        anchors.verticalCenter: close.verticalCenter
        text: "Customize Bubble"
        font.pixelSize: Theme.titleSize
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }

    IconButton {
        id: close

        anchors.right: parent.right
        anchors.rightMargin: Theme.pagePadding
        y: Theme.pagePadding
        symbol: "xmark"
        text: "Close"
        raised: true
        onClicked: sheet.dismissed()
    }

    ScrollPane {
        anchors.top: close.bottom
        anchors.topMargin: Theme.padding
        anchors.bottom: buttons.top
        anchors.bottomMargin: Theme.padding
        x: Theme.pagePadding
        width: sheet.width - 2 * Theme.pagePadding

        GlassInfoCard {
            width: parent.width
            title: "Agent Details"

            InfoRow {
                width: parent.width
                visible: value !== ""
                label: "Activity"
                value: sheet.detail ?? ""
            }

            InfoRow {
                width: parent.width
                visible: value !== ""
                label: "Model"
                value: sheet.modelName ?? ""
            }

            InfoRow {
                width: parent.width
                visible: sheet.progressText !== undefined
                label: "Progress"
                value: sheet.progressText ?? ""
            }

            InfoRow {
                width: parent.width
                label: "Agent ID"
                value: sheet.agentId
            }
        }

        LineField {
            id: name

            width: parent.width
            focus: true
            placeholderText: "Display name"
            text: appearance.name
            onAccepted: sheet.save()
        }

        LineField {
            id: emoji

            width: parent.width
            placeholderText: "Emoji"
            text: appearance.emoji
            onAccepted: sheet.save()
        }

        Label {
            width: parent.width
            text: "Tip: use a single emoji for the cleanest circle rendering."
            secondary: true
            font.pixelSize: Theme.smallSize
            wrapMode: Text.Wrap
        }
    }

    Row {
        id: buttons

        anchors.right: parent.right
        anchors.rightMargin: Theme.pagePadding
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.pagePadding
        spacing: Theme.gap

        PushButton {
            kind: PushButton.Destructive
            text: "Reset"
            onClicked: sheet.reset()
        }

        PushButton {
            kind: PushButton.Prominent
            text: "Save"
            onClicked: sheet.save()
        }
    }
}
