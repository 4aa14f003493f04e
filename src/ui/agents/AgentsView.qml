pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Ostrelle

// The agents as a spinal map. It has its own model, which polls while the view exists.
FocusScope {
    id: view

    // Changed after a save or a reset, so that every bubble looks again how its agent is called.
    property int refreshKey: 0
    // The inspector is shown while there is one; it takes a tap's node as it then was.
    property AgentInspectorSheet inspector: null

    readonly property AgentsTopologyViewModel vm: AgentsTopologyViewModel {
    }

    function inspect(node: AgentBubble, details: var) {
        view.inspector = sheet.createObject(view, {
            "width": Qt.binding(() => view.width),
            "height": Qt.binding(() => view.height),
            "agentId": node.agentId,
            "agentName": node.name,
            "defaultEmoji": node.defaultEmoji,
            "detail": details.detail,
            "modelName": details.modelName,
            "progressText": node.progressText
        }) as AgentInspectorSheet;
        view.inspector.forceActiveFocus();
    }

    function dismiss() {
        view.inspector.parent = null; // it is destroyed only when the program is idle
        view.inspector.destroy();
        view.inspector = null;
        view.forceActiveFocus();
    }

    AgentCanvas {
        id: canvas

        viewModel: view.vm
        width: map.width
    }

    DashboardHeader {
        id: header

        x: Theme.pagePadding
        y: Theme.pagePadding
        width: view.width - 2 * Theme.pagePadding
        enabled: !view.inspector
        label: "AGENTS"
        title: "Spinal Map"
        status: view.vm.usingFallback ? "Mock layout — live data will replace this"
            : "Live data from status.json"
        onRefreshRequested: view.vm.load()
    }

    Flickable {
        id: map

        anchors.top: header.bottom
        anchors.bottom: error.visible ? error.top : view.bottom
        width: view.width
        enabled: !view.inspector
        contentWidth: width
        contentHeight: canvas.layoutHeight
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: ThinScrollBar {
        }

        function shows(y: real, reach: real): bool {
            return y + reach > map.contentY && y - reach < map.contentY + map.height;
        }

        function reveal(bubble: Item) {
            if (bubble.y < map.contentY) {
                map.contentY = Math.max(0, bubble.y - Theme.gap);
            } else if (bubble.y + bubble.height > map.contentY + map.height) {
                map.contentY = bubble.y + bubble.height + Theme.gap - map.height;
            }
        }

        PremiumSpine {
            x: Math.round(canvas.width / 2 - width / 2)
            y: canvas.spineTop
            width: 12
            height: Math.max(0, canvas.spineBottom - canvas.spineTop)
            visible: height > 0
            colors: Array.from(canvas.spineColors, name => Theme.named(name))
            glowing: canvas.activeAgentColors.length > 0
        }

        Repeater {
            model: canvas.nodeList

            AnatomicalBranch {
                required property string colorName
                required property bool isWorking
                required property point center
                required property real radius
                required property int side

                from: Qt.point(canvas.width / 2, center.y - radius)
                to: Qt.point(center.x - side * radius, center.y)
                color: Theme.named(colorName)
                energized: isWorking
                animated: map.shows(center.y, 2 * radius)
                visible: side !== 0
            }
        }

        Repeater {
            model: canvas.nodeList

            AgentBubble {
                id: bubble

                required property var detail
                required property var modelName

                refreshKey: view.refreshKey
                animated: map.shows(bubble.center.y, 2 * bubble.radius)
                onActiveFocusChanged: {
                    if (bubble.activeFocus) {
                        map.reveal(bubble);
                    }
                }
                onClicked: view.inspect(bubble, {detail: bubble.detail, modelName: bubble.modelName})
            }
        }
    }

    ErrorCard {
        id: error

        anchors.bottom: view.bottom
        anchors.bottomMargin: Theme.pagePadding
        x: Theme.pagePadding
        width: view.width - 2 * Theme.pagePadding
        visible: view.vm.errorMessage !== ""
        message: view.vm.errorMessage
    }

    Component {
        id: sheet

        AgentInspectorSheet {
            onChanged: ++view.refreshKey
            onDismissed: view.dismiss()
        }
    }
}
