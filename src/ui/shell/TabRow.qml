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
                Keys.onLeftPressed: row.focusTab(button.index, button.mirrored ? 1 : -1)
                Keys.onRightPressed: row.focusTab(button.index, button.mirrored ? -1 : 1)
            }
        }
    }

    // The next tab that is shown in that direction; after the last one comes the first.
    function focusTab(from: int, step: int) {
        let index = from;
        do {
            index = (index + step + tabs.count) % tabs.count;
        } while (!tabs.itemAt(index).visible);
        tabs.itemAt(index).forceActiveFocus(Qt.TabFocusReason);
    }
}
