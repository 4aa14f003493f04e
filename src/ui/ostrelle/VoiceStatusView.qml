import QtQuick
import QtQuick.Templates as T
import Ostrelle

// The voice agent's row: what it does, and its controls.
Item {
    id: view

    required property VoiceViewModel viewModel

    implicitHeight: card.implicitHeight

    Card {
        id: card

        width: view.width
        padding: 2 * Theme.gap

        Column {
            width: card.availableWidth
            spacing: 2 * Theme.gap

            Item {
                width: parent.width
                implicitHeight: Math.max(icon.height, label.height, badge.height)

                Symbol {
                    id: icon

                    anchors.left: parent.left
                    anchors.verticalCenter: parent.verticalCenter
                    name: view.viewModel.stateIcon
                    color: Theme.named(view.viewModel.stateColor)
                    size: Theme.headingSize
                }

                Label {
                    id: label

                    anchors.left: icon.right
                    anchors.leftMargin: Theme.gap
                    anchors.right: badge.left
                    anchors.rightMargin: Theme.gap
                    anchors.verticalCenter: parent.verticalCenter
                    text: view.viewModel.stateLabel
                    font.pixelSize: Theme.controlSize
                    font.weight: Font.DemiBold
                }

                Capsule {
                    id: badge

                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    width: Math.min(implicitWidth, parent.width / 2)
                    visible: view.viewModel.voiceRunning
                    text: view.viewModel.tier.toUpperCase()
                    tint: view.viewModel.tier === "local" ? Theme.green : Theme.purple
                }
            }

            // As high in every state, so that nothing below moves, but for a long problem. The keyboard's
            // focus stays here when one makes room for the other.
            FocusScope {
                id: place

                readonly property T.Control shown: view.viewModel.voiceRunning ? controls.firstButton
                    : view.viewModel.isLaunching ? launching : startButton

                width: parent.width
                implicitHeight: Math.max(controls.implicitHeight, startButton.implicitHeight,
                    launching.visible ? launching.height : 0)
                onShownChanged: {
                    const left = place.Window.activeFocusItem as T.Control;
                    if (place.activeFocus && left) {
                        place.shown.forceActiveFocus(left.focusReason);
                    }
                }

                VoiceControls {
                    id: controls

                    anchors.horizontalCenter: parent.horizontalCenter
                    visible: view.viewModel.voiceRunning
                    viewModel: view.viewModel
                    availableWidth: parent.width
                }

                T.Control {
                    id: launching

                    anchors.centerIn: parent
                    width: Math.min(implicitContentWidth, parent.width)
                    height: implicitContentHeight
                    visible: !view.viewModel.voiceRunning && view.viewModel.isLaunching
                    Accessible.role: Accessible.StaticText
                    Accessible.name: launchState.text
                    Accessible.focusable: true

                    contentItem: Row {
                        spacing: Theme.gap

                        Spinner {
                            id: spinner

                            anchors.verticalCenter: parent.verticalCenter
                        }

                        Label {
                            id: launchState

                            anchors.verticalCenter: parent.verticalCenter
                            width: Math.min(implicitWidth, place.width - spinner.width - parent.spacing)
                            secondary: !launching.visualFocus
                            wrapMode: Text.Wrap
                            Accessible.ignored: true
                            text: view.viewModel.startProblem || "Starting voice agent…"
                        }
                    }
                }

                PushButton {
                    id: startButton

                    anchors.centerIn: parent
                    width: Math.min(implicitWidth, parent.width)
                    visible: !view.viewModel.voiceRunning && !view.viewModel.isLaunching
                    symbol: "play.fill"
                    text: "Start Voice Agent"
                    onClicked: view.viewModel.start()
                }
            }
        }
    }
}
