import QtQuick
import Ostrelle

// Scrolls a page with the page keys, and to its ends with Home and End. So everything on it can be
// read with the keyboard, also where no control is near.
QtObject {
    id: keys

    required property Flickable page

    // False for other keys, and where there is nothing to scroll.
    function turn(key: int): bool {
        const page = keys.page;
        const top = page.originY - page.topMargin;
        const bottom = Math.max(top, page.originY + page.contentHeight + page.bottomMargin - page.height);
        const reach = page.height - Theme.hitArea; // what was the last line is seen once more
        const goal = {
            [Qt.Key_PageDown]: page.contentY + reach, [Qt.Key_PageUp]: page.contentY - reach,
            [Qt.Key_End]: bottom, [Qt.Key_Home]: top
        }[key];
        if (goal === undefined || top === bottom) {
            return false;
        }
        page.contentY = Math.max(top, Math.min(goal, bottom));
        return true;
    }
}
