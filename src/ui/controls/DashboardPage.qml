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

    signal refreshRequested

    function toggle(key: string) {
        page.open = page.open.includes(key) ? page.open.filter(each => each !== key)
            : page.open.concat(key);
    }

    function reveal(index: int) {
        list.positionViewAtIndex(index, ListView.Contain);
    }

    // Gives the keyboard to that card; false if there is none. The keyboard cannot find it by
    // itself: cards out of view are not made, and they stand in the order of their making.
    function focusCard(index: int, reason: int): bool {
        page.reveal(index);
        const card = list.itemAtIndex(index);
        card?.forceActiveFocus(reason);
        return card !== null;
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
        model: page.cards
        delegate: page.delegate
        cacheBuffer: Theme.panelHeight
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
                message: page.emptyMessage
            }
        }
    }
}
