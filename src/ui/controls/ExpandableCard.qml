import QtQuick
import Ostrelle

// A dashboard's card, all of which is one button, that shows more of itself after a tap. The page
// keeps which ones are open, because cards are made anew when they are scrolled back into view. A
// screen reader hears the card's name and details, so its summary says nothing to one.
BaseButton {
    id: card

    required property DashboardPage page
    required property int index
    required property string key // tells it from the page's other cards

    // Always seen.
    property alias summary: summary.data
    // Beside the chevron.
    property string more: ""
    // What the summary says beyond the card's name.
    property string details: ""
    // There is something to unfold.
    property bool opens: true
    readonly property bool expanded: card.opens && card.page.open.includes(card.key)
    default property alias content: fold.content

    width: card.page.cardWidth
    implicitHeight: column.implicitHeight + 2 * Theme.padding
    Accessible.role: card.opens ? Accessible.Button : Accessible.ListItem
    Accessible.description: [card.details, card.more, !card.opens ? "" : card.expanded ? "expanded"
        : "collapsed"].filter(each => each !== "").join(", ")
    Keys.onPressed: event => event.accepted = card.page.walk(card, event.key)
    onClicked: {
        if (card.opens) {
            card.page.toggle(card.key);
        }
    }
    onHeightChanged: card.page.stayInView(card)
    // The card at the keyboard exists wherever the user scrolls to.
    onActiveFocusChanged: {
        if (card.activeFocus) {
            card.ListView.view.currentIndex = card.index;
        }
    }

    background: Rectangle {
        radius: Theme.radius
        color: card.hovered ? Theme.surfaceHovered : Theme.surface
        border.width: card.visualFocus ? Theme.focusWidth : 1
        border.color: card.visualFocus ? Theme.focusRing : Theme.hairline

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }
    }

    contentItem: Item {
        Column {
            id: column

            x: Theme.padding
            y: Theme.padding
            width: card.width - 2 * Theme.padding

            Column {
                id: summary

                width: parent.width
                spacing: Theme.smallGap
            }

            Item {
                width: parent.width
                height: chevron.height + Theme.gap
                visible: card.opens || card.more !== ""

                Symbol {
                    id: chevron

                    anchors.left: parent.left
                    anchors.bottom: parent.bottom
                    name: card.expanded ? "chevron.down" : "chevron.right"
                    mirror: card.mirrored
                    visible: card.opens
                    color: Theme.textSecondary
                    size: Theme.smallSize
                }

                Label {
                    anchors.left: card.opens ? chevron.right : parent.left
                    anchors.leftMargin: card.opens ? Theme.smallGap : 0
                    anchors.right: parent.right
                    anchors.verticalCenter: chevron.verticalCenter
                    text: card.more
                    secondary: true
                    font.pixelSize: Theme.smallSize
                    Accessible.ignored: true
                }
            }

            Fold {
                id: fold

                width: parent.width
                open: card.expanded
            }
        }
    }
}
