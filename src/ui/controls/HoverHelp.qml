pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Ostrelle

// The help that appears while the pointer rests on its parent. It costs next to nothing until then.
Item {
    id: help

    required property string text
    // The pointer is there.
    required property bool wanted

    readonly property bool isShown: help.wanted && help.text !== ""
    property T.ToolTip bubble: null

    visible: false
    onIsShownChanged: {
        if (help.isShown) {
            help.bubble = bubbleMaker.createObject(help) as T.ToolTip;
        } else {
            help.bubble?.destroy();
            help.bubble = null;
        }
    }

    Component {
        id: bubbleMaker

        T.ToolTip {
            id: tip

            parent: help.parent
            x: Math.round((tip.parent.width - tip.width) / 2)
            y: -tip.height - Theme.smallGap
            width: Math.min(implicitContentWidth + tip.leftPadding + tip.rightPadding, Theme.helpWidth)
            height: implicitContentHeight + tip.topPadding + tip.bottomPadding
            margins: Theme.smallGap
            horizontalPadding: Theme.gap
            verticalPadding: Theme.smallGap
            delay: Theme.helpDelay
            visible: true
            text: Texts.help(help.text)

            contentItem: Text {
                text: tip.text
                color: Theme.textPrimary
                font.pixelSize: Theme.smallSize
                textFormat: Text.PlainText
                wrapMode: Text.Wrap
            }

            background: Rectangle {
                color: Theme.sheet
                radius: Theme.smallRadius
                border.color: Theme.hairline
            }
        }
    }
}
