pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The panel's tabs side by side, of equal width. The arrow keys go from one to the next.
Item {
    id: row

    required property int selectedTab
    required property bool projectTrackingEnabled

    readonly property int shownTabs: row.projectTrackingEnabled ? 5 : 4

    signal chosen(int index)

    implicitHeight: buttons.height + 2 * Theme.gap
    Accessible.role: Accessible.PageTabList
    Accessible.name: "Tabs"

    Row {
        id: buttons

        anchors.centerIn: parent
        width: row.width - 2 * Theme.gap
        layoutDirection: row.LayoutMirroring.enabled ? Qt.RightToLeft : Qt.LeftToRight

        Repeater {
            id: tabs

            model: [
                {label: "Ostrelle", symbol: "shield.lefthalf.filled"},
                {label: "Projects", symbol: "square.grid.2x2"},
                {label: "Agents", symbol: "point.3.connected.trianglepath.dotted"},
                {label: "Cron", symbol: "clock.arrow.2.circlepath"},
                {label: "Settings", symbol: "gearshape"}
            ]

            TabButton {
                id: button

                required property int index
                required property var modelData

                width: buttons.width / row.shownTabs
                visible: button.index !== 1 || row.projectTrackingEnabled
                label: button.modelData.label
                symbol: button.modelData.symbol
                selected: row.selectedTab === button.index
                onClicked: row.chosen(button.index)
                Keys.onLeftPressed: row.focusNext(button, button.mirrored)
                Keys.onRightPressed: row.focusNext(button, !button.mirrored)
            }
        }
    }

    function focusNext(button: TabButton, forward: bool) {
        button.nextItemInFocusChain(forward).forceActiveFocus(Qt.TabFocusReason);
    }
}
