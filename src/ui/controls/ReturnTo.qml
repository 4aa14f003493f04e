import QtQuick
import Ostrelle

// Brings a page back to where it was scrolled to, as soon as there is enough of it again; the user
// who scrolls ends that.
Item {
    id: goal

    required property Flickable page
    property real wantedY: 0

    readonly property real reachable: Math.min(goal.wantedY, goal.page.contentHeight - goal.page.height)

    onReachableChanged: {
        if (goal.reachable > 0) {
            goal.page.contentY = goal.reachable;
        }
    }

    Connections {
        target: goal.page

        function onMovementStarted() {
            goal.wantedY = 0;
        }
    }
}
