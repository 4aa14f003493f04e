pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Ostrelle

// The agents as a spinal map.
FocusScope {
    id: view

    required property AgentsTopologyViewModel viewModel

    // Changed after a save or a reset, so that every bubble looks again how its agent is called.
    property int refreshKey: 0
    // The inspector is shown while there is one; it is the AgentNode of a tap as it then was.
    property var selectedNode: null

    function dismiss() {
        const id = view.selectedNode.id;
        view.selectedNode = null;
        const shown = Array.from({length: bubbles.count}, (_, i) => bubbles.itemAt(i));
        const bubble = shown.find(each => each.node.id === id) ?? view;
        bubble.forceActiveFocus();
    }

    // What is to be had again when the view is made anew.
    function keepsake(): var {
        return {y: map.contentY, node: view.selectedNode, typed: inspector.item?.typed()};
    }

    function restore(kept: var) {
        returnTo.wantedY = kept.y;
        view.selectedNode = kept.node;
        inspector.item?.type(kept.typed);
    }

    // False when the key does not scroll.
    function turnPage(key: int): bool {
        return inspector.item?.turnPage(key) ?? pageKeys.turn(key);
    }

    // Closes the inspector; false when there is none.
    function closeQuestion(): bool {
        const isAsked = view.selectedNode !== null;
        if (isAsked) {
            view.dismiss();
        }
        return isAsked;
    }

    AgentCanvas {
        id: canvas

        viewModel: view.viewModel
        width: map.width
        viewTop: map.contentY
        viewHeight: map.height
    }

    CanvasClock {
        id: clock

        running: map.visible && Theme.motion && canvas.activeAgentColors.length > 0
    }

    PageKeys {
        id: pageKeys

        page: map
    }

    ReturnTo {
        id: returnTo

        page: map
    }

    FontMetrics {
        id: mainName

        font.pixelSize: Theme.smallSize
        font.weight: Font.DemiBold
    }

    DashboardHeader {
        id: header

        x: Theme.pagePadding
        y: Theme.pagePadding
        width: view.width - 2 * Theme.pagePadding
        visible: !view.selectedNode
        label: "AGENTS"
        title: "Spinal Map"
        status: view.viewModel.usingFallback ? "Mock layout — live data will replace this"
            : "Live data from status.json"
        onRefreshRequested: view.viewModel.load()
    }

    Flickable {
        id: map

        anchors.top: header.bottom
        anchors.bottom: view.bottom
        width: view.width
        visible: !view.selectedNode
        contentWidth: width
        contentHeight: error.visible ? error.y + error.height + Theme.pagePadding : canvas.layoutHeight
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: ThinScrollBar {
        }

        // Whether what reaches so far around there moves: only what is seen does.
        function moves(y: real, reach: real): bool {
            return clock.running && y + reach > map.contentY && y - reach < map.contentY + map.height;
        }

        function reveal(bubble: Item) {
            if (bubble.y < map.contentY) {
                map.contentY = Math.max(0, bubble.y - Theme.gap);
            } else if (bubble.y + bubble.height > map.contentY + map.height) {
                map.contentY = bubble.y + bubble.height + Theme.gap - map.height;
            }
        }

        PremiumSpine {
            id: spine

            x: Math.round(canvas.width / 2 - width / 2)
            y: Math.round(canvas.spineTop + mainName.height + 2 * Theme.smallGap)
            height: Math.max(0, Math.round(canvas.spineBottom - y))
            colors: Array.from(canvas.spineColors, name => Theme.named(name))
            phase: clock.spineFlow
            moves: map.moves(spine.y + spine.phase * spine.height, Theme.dotSize)
        }

        Repeater {
            model: canvas.nodeList

            AnatomicalBranch {
                id: branch

                required property var node
                required property point center
                required property real radius

                fromSpineX: canvas.width / 2
                spineY: branch.center.y
                to: Qt.point(branch.center.x - branch.side * branch.radius, branch.center.y)
                color: Theme.named(branch.node.colorName)
                energized: branch.node.isWorking
                moves: branch.energized && map.moves(branch.center.y, branch.radius)
                flow: branch.moves ? clock.branchFlow : 0
                visible: branch.side !== 0
            }
        }

        Repeater {
            id: bubbles

            model: canvas.nodeList

            AgentBubble {
                id: bubble

                required property int index

                readonly property bool moves: bubble.node.isWorking
                    && map.moves(bubble.center.y, bubble.radius + Theme.bubbleHalo)

                z: bubbles.count - bubble.index // its texts stand before the next one's halo
                pulse: bubble.moves ? clock.pulse : 0
                processingRing: bubble.moves ? clock.ring : 0
                viewModel: view.viewModel
                refreshKey: view.refreshKey
                onActiveFocusChanged: {
                    if (bubble.activeFocus) {
                        map.reveal(bubble);
                    }
                }
                onClicked: view.selectedNode = bubble.node
            }
        }

        // Below the canvas, or as far below as there is room.
        ErrorCard {
            id: error

            x: Theme.pagePadding
            y: Math.max(canvas.layoutHeight, map.height - error.height - Theme.pagePadding)
            width: view.width - 2 * Theme.pagePadding
            visible: view.viewModel.errorMessage !== ""
            message: Theme.shortened(view.viewModel.errorMessage)
        }
    }

    Lazy {
        id: inspector

        anchors.fill: parent
        active: view.selectedNode !== null

        AgentInspectorSheet {
            height: inspector.height
            viewModel: view.viewModel
            node: view.selectedNode
            Component.onCompleted: {
                node = view.selectedNode; // not bound to it: that ends before the sheet does
                forceActiveFocus();
            }
            onSave: ++view.refreshKey
            onDismiss: view.dismiss()
        }
    }
}
