import QtQuick
import Ostrelle

// What is known of one agent, and what the user wants to call it.
FocusScope {
    id: sheet

    required property AgentsTopologyViewModel viewModel
    required property var node // an AgentNode, as it was when the sheet was opened

    // Something was saved or reset.
    signal save
    signal dismiss

    Accessible.role: Accessible.Dialog
    Accessible.name: title.text
    Keys.onEscapePressed: sheet.dismiss()

    function typed(): var {
        return {name: name.text, emoji: emoji.text};
    }

    function type(texts: var) {
        name.text = texts.name;
        emoji.text = texts.emoji;
    }

    // False when the key does not scroll.
    function turnPage(key: int): bool {
        return details.turnPage(key);
    }

    function store() {
        appearance.save(name.text, emoji.text);
        sheet.save();
        sheet.dismiss();
    }

    function reset() {
        appearance.reset();
        sheet.save();
        sheet.dismiss();
    }

    AgentAppearance {
        id: appearance

        viewModel: sheet.viewModel
        agentId: sheet.node.id
        fallbackName: sheet.node.name
        fallbackEmoji: sheet.node.defaultEmoji
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.sheet
        radius: Theme.radius
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
        onClicked: sheet.dismiss()
    }

    ScrollPane {
        id: details

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
                value: sheet.node.detail ?? ""
            }

            InfoRow {
                width: parent.width
                visible: value !== ""
                label: "Model"
                value: sheet.node.model ?? ""
            }

            InfoRow {
                width: parent.width
                visible: sheet.node.progressText !== undefined
                label: "Progress"
                value: sheet.node.progressText ?? ""
            }

            InfoRow {
                width: parent.width
                label: "Agent ID"
                value: sheet.node.id
            }
        }

        Column {
            width: parent.width
            spacing: Theme.smallGap

            FieldLabel {
                width: parent.width
                field: name
            }

            LineField {
                id: name

                width: parent.width
                focus: true
                placeholderText: "Display name"
                text: appearance.name
                onAccepted: sheet.store()
            }
        }

        Column {
            width: parent.width
            spacing: Theme.smallGap

            FieldLabel {
                width: parent.width
                field: emoji
            }

            LineField {
                id: emoji

                width: parent.width
                placeholderText: "Emoji"
                text: appearance.emoji
                onAccepted: sheet.store()
            }
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
            onClicked: sheet.store()
        }
    }
}
