import QtQuick
import Ostrelle

// What joins an agent to the spine. Light flows along it while the agent works.
Item {
    id: branch

    required property point from // on the spine
    required property point to   // at the agent's rim
    required property color color
    required property bool energized
    required property bool animated

    x: Math.min(branch.from.x, branch.to.x)
    y: branch.from.y - line.thickness
    width: Math.abs(branch.to.x - branch.from.x)
    height: Math.max(branch.to.y - branch.from.y, 0) + 2 * line.thickness

    BranchCurve {
        id: line

        anchors.fill: parent
        color: branch.energized ? branch.color : Theme.faded(branch.color, 0.7)
        thickness: branch.energized ? 2 : 1.2
        toLeft: branch.to.x < branch.from.x
    }

    FlowLight {
        id: flow

        readonly property point place: line.pointAt(flow.phase)

        x: flow.place.x - width / 2
        y: flow.place.y - height / 2
        color: branch.color
        visible: branch.energized && branch.animated && Theme.motion
        running: visible
        duration: Theme.branchFlow
    }
}
