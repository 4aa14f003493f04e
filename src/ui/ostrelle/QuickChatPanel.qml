import QtQuick
import Ostrelle

// The one-line chat with the gateway.
Item {
    id: panel

    required property QuickChatVM chatVM
    // The base URL of the configured gateway.
    required property string gatewayURL

    implicitHeight: header.height + 6 * Theme.bodySize + input.height + 2 * Theme.gap

    function send() {
        panel.chatVM.send(panel.gatewayURL);
    }

    Item {
        id: header

        width: panel.width
        implicitHeight: Math.max(bubble.height, title.height)

        Symbol {
            id: bubble

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            name: "bubble.left.fill"
            color: Theme.teal
            size: Theme.headingSize
        }

        Label {
            id: title

            anchors.left: bubble.right
            anchors.leftMargin: Theme.gap
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: "Quick Chat"
            font.pixelSize: Theme.controlSize
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
    }

    ChatMessageList {
        id: messages

        anchors.top: header.bottom
        anchors.topMargin: Theme.gap
        anchors.bottom: input.top
        anchors.bottomMargin: Theme.gap
        width: panel.width
        chatVM: panel.chatVM
        onReplied: text => {
            news.visible = false;
            news.text = text;
            news.visible = true;
        }
    }

    // A screen reader speaks a notification when it appears.
    Item {
        id: news

        property string text: ""

        anchors.fill: messages
        visible: false
        Accessible.role: Accessible.Notification
        Accessible.name: news.text

        Timer {
            interval: Theme.answerTime
            running: news.visible
            onTriggered: news.visible = false
        }
    }

    Label {
        anchors.centerIn: messages
        width: Math.min(implicitWidth, panel.width)
        visible: panel.chatVM.messages.count === 0
        secondary: true
        text: "Ask me anything…"
    }

    Item {
        id: input

        anchors.bottom: panel.bottom
        width: panel.width
        implicitHeight: Math.max(field.height, send.height)

        LineField {
            id: field

            anchors.left: parent.left
            anchors.right: send.left
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            placeholderText: "Ask something…"
            keepsLineBreaks: true
            text: panel.chatVM.input
            onTextEdited: panel.chatVM.input = field.text
            onAccepted: panel.send()
            Keys.onUpPressed: messages.flick(0, 4 * messages.height)
            Keys.onDownPressed: messages.flick(0, -4 * messages.height)
        }

        IconButton {
            id: send

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            visible: !panel.chatVM.isLoading
            symbol: "arrow.up.circle.fill"
            symbolSize: Theme.titleSize
            color: Theme.teal
            text: "Send"
            onClicked: {
                panel.send();
                field.forceActiveFocus();
            }
        }

        Lazy {
            anchors.centerIn: send
            active: panel.chatVM.isLoading

            Spinner {}
        }
    }
}
