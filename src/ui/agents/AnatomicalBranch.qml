import QtQuick
import Ostrelle

// What joins an agent to the spine. Light flows along it while the agent works.
Item {
    id: branch

    required property real fromSpineX
    required property real spineY
    required property point to // at the agent's rim
    required property int side // -1 left of the spine, 1 right of it
    required property color color
    required property bool energized
    required property bool moves
    required property real flow // of the way, 0 at the spine and 1 at the agent

    x: Math.min(branch.fromSpineX, branch.to.x)
    y: branch.spineY - branch.height + line.thickness
    width: Math.abs(branch.to.x - branch.fromSpineX)
    height: Math.round(Theme.branchBow * branch.width) + 2 * line.thickness

    BranchCurve {
        id: line

        anchors.fill: parent
        color: branch.energized ? branch.color : Theme.faded(branch.color, 0.7)
        thickness: branch.energized ? 2 : 1.2
        toLeft: branch.side < 0
    }

    FlowLight {
        id: light

        readonly property point place: light.visible ? line.pointAt(branch.flow) : Qt.point(0, 0)

        x: Math.round(light.place.x - width / 2)
        y: Math.round(light.place.y - height / 2)
        color: branch.color
        visible: branch.energized && branch.moves
    }
}
