import QtQuick
import QtQuick.Templates as T
import Ostrelle

// A column that scrolls up and down when it is taller than its place. Whatever gets the keyboard's
// focus is brought into view, and kept there while it unfolds, until the user scrolls. The page keys
// come from the panel or the sheet that it stands in.
Flickable {
    id: pane

    default property alias content: column.data
    property int spacing: Theme.padding

    property Item followed: null

    contentWidth: width
    contentHeight: column.implicitHeight
    clip: interactive
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentHeight > height
    onMovementStarted: pane.followed = null
    onContentHeightChanged: pane.follow()

    // What is to be had again when the page is made anew.
    function keepsake(): var {
        return {y: pane.contentY};
    }

    function restore(kept: var) {
        returnTo.wantedY = kept.y;
    }

    // False when the key does not scroll.
    function turnPage(key: int): bool {
        const turns = pageKeys.turn(key);
        if (turns) {
            pane.followed = null;
        }
        return turns;
    }

    function reveal(item: Item) {
        const top = item.mapToItem(column, 0, 0).y;
        if (top < pane.contentY) {
            pane.contentY = Math.max(0, top - Theme.gap);
        } else if (top + item.height > pane.contentY + pane.height) {
            pane.contentY = Math.min(top + item.height + Theme.gap, pane.contentHeight) - pane.height;
        }
    }

    function follow() {
        if (pane.interactive && pane.followed) {
            pane.reveal(pane.followed);
        }
    }

    // Puts everything in its place at once, not only before the next frame.
    function forceLayout() {
        column.forceLayout();
    }

    function isWithin(item: Item): bool {
        for (let ancestor = item; ancestor; ancestor = ancestor.parent) {
            if (ancestor === column) {
                return true;
            }
        }
        return false;
    }

    PageKeys {
        id: pageKeys

        page: pane
    }

    ReturnTo {
        id: returnTo

        page: pane
    }

    Connections {
        target: pane.Window.window

        function onActiveFocusItemChanged() {
            const item = pane.Window.activeFocusItem;
            pane.followed = item && pane.isWithin(item) ? item : null;
            pane.follow();
        }
    }

    Column {
        id: column

        width: pane.width
        spacing: pane.spacing
    }

    T.ScrollBar.vertical: ThinScrollBar {
        onPressedChanged: pane.followed = null
    }
}
