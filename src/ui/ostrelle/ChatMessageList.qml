pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The messages of the quick chat, oldest first. A new one glides into view; the last one stays in
// view until the user scrolls away from it.
ScrollPane {
    id: list

    required property QuickChatVM chatVM

    readonly property real end: Math.max(0, list.contentHeight - list.height)
    property bool staysAtEnd: true

    signal replied(string text)

    onMovementStarted: {
        glide.stop();
        list.staysAtEnd = false;
    }
    onMovementEnded: list.staysAtEnd = list.atYEnd
    onEndChanged: {
        if (list.staysAtEnd && !glide.running) {
            list.contentY = list.end;
        }
    }

    function glideToEnd() {
        const from = list.contentY;
        list.staysAtEnd = true;
        list.forceLayout();
        glide.from = from;
        glide.to = list.end;
        glide.restart();
    }

    NumberAnimation {
        id: glide

        target: list
        property: "contentY"
        duration: Theme.calm
        easing.type: Easing.OutQuad
        onFinished: list.contentY = list.end
    }

    Repeater {
        model: list.chatVM.messages
        onItemAdded: (index, item) => {
            list.glideToEnd();
            if (list.chatVM.isLoading && !item.isUser && index === list.chatVM.messages.count - 1) {
                list.replied(item.text);
            }
        }
        // What stays keeps its place while the oldest message goes.
        onItemRemoved: (index, item) => list.contentY -= item.height + list.spacing

        ChatMessageRow {
            width: list.width
        }
    }
}
