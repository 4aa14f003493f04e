import QtQuick
import Ostrelle

// By which all that moves on the canvas does: in steps, for each has the canvas drawn anew, and in
// time with one another, so that no poll starts a movement afresh.
Timer {
    id: clock

    property real now: 0 // in milliseconds
    // From 0 to 1 and back, gently at both ends.
    readonly property real pulse: Math.round(20 * clock.swing(Theme.bubblePulse)) / 20 // is so faint
    readonly property real ring: clock.swing(Theme.bubbleRing)
    // From 0 to 1 again and again.
    readonly property real branchFlow: clock.now % Theme.branchFlow / Theme.branchFlow
    readonly property real spineFlow: clock.now % Theme.spineFlow / Theme.spineFlow

    interval: Theme.canvasStep
    repeat: true
    onTriggered: clock.now += clock.interval

    // The duration is that of one way.
    function swing(duration: int): real {
        return (1 - Math.cos(Math.PI * clock.now / duration)) / 2;
    }
}
