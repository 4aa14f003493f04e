import QtQuick
import QtQuick.Templates as T
import Ostrelle

// A dashboard of cards: its header, what went wrong, and the cards or what stands in for them.
FocusScope {
    id: page

    required property string label
    required property string title
    required property string count
    required property string countDescription
    required property bool isLoading
    required property string errorMessage
    required property bool isEmpty
    required property string emptyMessage
    required property QtObject cards // a list model
    required property Component delegate

    readonly property real cardWidth: list.width - 2 * Theme.pagePadding

    // The keys of the open cards.
    property var open: []
    // False until the first load has ended.
    property bool hasAnswer: false
    // The uppermost card that shall be in view once there are cards, and how much of it is above;
    // whatever the user does meanwhile ends that.
    property var wantedPlace: undefined

    signal refreshRequested

    onIsLoadingChanged: page.hasAnswer = page.hasAnswer || !page.isLoading

    // What is to be had again when the page is made anew.
    function keepsake(): var {
        const index = list.indexAt(Theme.pagePadding, list.contentY + list.spacing);
        return {open: page.open, index: index, above: list.contentY - (list.itemAtIndex(index)?.y ?? 0)};
    }

    function restore(kept: var) {
        page.open = kept.open;
        page.wantedPlace = kept.index >= 0 ? kept : undefined;
    }

    function takePlace() {
        if (page.wantedPlace && list.count > page.wantedPlace.index) {
            list.positionViewAtIndex(page.wantedPlace.index, ListView.Beginning);
            list.contentY += page.wantedPlace.above;
            page.wantedPlace = undefined;
        }
    }

    function toggle(key: string) {
        page.open = page.open.includes(key) ? page.open.filter(each => each !== key)
            : page.open.concat(key);
    }

    // False when the key does not scroll.
    function turnPage(key: int): bool {
        return pageKeys.turn(key);
    }

    // Before the first card stands what went wrong.
    function reveal(index: int) {
        list.positionViewAtIndex(index, ListView.Contain);
        if (index === 0 && list.headerItem.height + list.itemAtIndex(0)?.height <= list.height) {
            list.positionViewAtBeginning();
        }
    }

    // The card at the keyboard stays in view while it or another one unfolds; whoever has scrolled
    // away from it is not brought back by another one. Later, because cards also get their height
    // while the list lays them out, and it would begin anew without end.
    function stayInView(unfolding: Item) {
        const card = list.currentItem;
        const isInView = card?.y >= list.contentY && card.y + card.height <= list.contentY + list.height;
        if (card === unfolding || isInView) {
            Qt.callLater(page.revealFocused);
        }
    }

    function revealFocused() {
        if (list.currentItem?.activeFocus) {
            page.reveal(list.currentIndex);
        }
    }

    // Gives the keyboard to that card. Qt's own order would be that in which the cards were made, and
    // those out of view are not.
    function focusCard(index: int, reason: int) {
        page.reveal(index);
        list.itemAtIndex(index)?.forceActiveFocus(reason);
    }

    // Goes from that card to another one as the key says, with Tab also out of the list; false where
    // the key does not lead to another one.
    function walk(card: Item, key: int): bool {
        if (page.readOn(card, key)) {
            return true;
        }
        const perPage = Math.max(1, Math.floor(list.height / (card.height + list.spacing)));
        const step = {
            [Qt.Key_Tab]: 1, [Qt.Key_Backtab]: -1, [Qt.Key_Down]: 1, [Qt.Key_Up]: -1,
            [Qt.Key_PageDown]: perPage, [Qt.Key_PageUp]: -perPage,
            [Qt.Key_End]: list.count, [Qt.Key_Home]: -list.count
        }[key] ?? 0;
        const wanted = card.index + step;
        const goal = Math.max(0, Math.min(wanted, list.count - 1));
        const isForward = step > 0;
        const reason = isForward ? Qt.TabFocusReason : Qt.BacktabFocusReason;
        const isTab = key === Qt.Key_Tab || key === Qt.Key_Backtab;
        if (isTab && goal !== wanted) {
            const edge = isForward ? afterCards : beforeCards;
            edge.nextItemInFocusChain(isForward).forceActiveFocus(reason);
        } else if (goal !== card.index) {
            page.focusCard(goal, reason);
        }
        return isTab || goal !== card.index;
    }

    // Scrolls within a card that is higher than the page, while there is more of it that way.
    function readOn(card: Item, key: int): bool {
        const reach = {
            [Qt.Key_Down]: list.height / 4, [Qt.Key_Up]: -list.height / 4,
            [Qt.Key_PageDown]: list.height - Theme.hitArea, [Qt.Key_PageUp]: Theme.hitArea - list.height
        }[key] ?? 0;
        const above = list.contentY - card.y;
        const below = card.y + card.height - list.contentY - list.height;
        const step = reach > 0 ? Math.min(reach, below) : Math.max(reach, -above);
        const hasMore = card.height > list.height && step * reach > 0;
        if (hasMore) {
            list.contentY += step;
        }
        return hasMore;
    }

    PageKeys {
        id: pageKeys

        page: list
    }

    UserInput {
        window: page.wantedPlace ? page.Window.window : null
        onHappened: page.wantedPlace = undefined
    }

    DashboardHeader {
        id: header

        x: Theme.pagePadding
        y: Theme.pagePadding
        width: page.cardWidth
        label: page.label
        accent: Theme.teal
        title: page.title
        count: page.count
        countDescription: page.countDescription
        isLoading: page.isLoading
        onRefreshRequested: page.refreshRequested()
    }

    // Whoever comes to the cards with Tab comes to the first one, and with Shift+Tab to the last one.
    Item {
        id: beforeCards

        activeFocusOnTab: list.count > 0
        onActiveFocusChanged: {
            if (beforeCards.activeFocus) {
                page.focusCard(0, Qt.TabFocusReason);
            }
        }
    }

    ListView {
        id: list

        anchors.top: header.bottom
        anchors.topMargin: Theme.padding
        anchors.bottom: page.bottom
        width: page.width
        leftMargin: Theme.pagePadding
        rightMargin: Theme.pagePadding
        bottomMargin: Theme.pagePadding
        spacing: Theme.gap
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        keyNavigationEnabled: false
        highlightFollowsCurrentItem: false
        model: page.cards
        delegate: page.delegate
        cacheBuffer: list.height
        onCountChanged: page.takePlace()
        T.ScrollBar.vertical: ThinScrollBar {
        }

        header: Column {
            width: page.cardWidth
            spacing: Theme.gap
            bottomPadding: page.isEmpty || page.errorMessage !== "" ? Theme.gap : 0

            ErrorCard {
                width: parent.width
                visible: page.errorMessage !== ""
                message: Theme.shortened(page.errorMessage)
            }

            MinimalEmptyCard {
                width: parent.width
                visible: page.isEmpty
                message: page.hasAnswer ? page.emptyMessage : "Loading…"
            }
        }
    }

    Item {
        id: afterCards

        activeFocusOnTab: list.count > 0
        onActiveFocusChanged: {
            if (afterCards.activeFocus) {
                page.focusCard(list.count - 1, Qt.BacktabFocusReason);
            }
        }
    }
}
