import QtQuick
import Ostrelle

// Brings a page back to where it was scrolled to, as soon as there is enough of it again; whatever
// the user does meanwhile ends that.
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

    UserInput {
        window: goal.wantedY > 0 ? goal.Window.window : null
        onHappened: goal.wantedY = 0
    }
}
