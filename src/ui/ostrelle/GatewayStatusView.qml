import QtQuick
import Ostrelle

// How the gateway can be reached, in a few lines.
Item {
    id: view

    required property GatewayViewModel viewModel
    required property ServiceManager serviceManager
    property VoiceViewModel voiceVM: null
    required property bool statusServerRunning
    property bool statusPortTaken: false

    readonly property bool voiceRunning: view.voiceVM ? view.voiceVM.voiceRunning
        : view.serviceManager.voiceRunning
    readonly property string address: view.viewModel.magicDNSURL || view.viewModel.preferredURL
    // What keeps other devices away; empty when nothing does.
    readonly property string problem: !view.viewModel.tailscaleInstalled
        ? "Tailscale not running — remote access unavailable"
        : view.viewModel.magicDNSURL === "" ? "Tailscale connected but HTTPS not configured" : ""

    implicitHeight: column.implicitHeight

    Column {
        id: column

        width: view.width
        spacing: Theme.gap

        SecurityWarningBanner {
            width: parent.width
            visible: view.viewModel.showSecurityWarning
            viewModel: view.viewModel
        }

        Card {
            id: card

            width: parent.width

            Column {
                width: card.availableWidth
                spacing: Theme.gap

                Item {
                    width: parent.width
                    implicitHeight: dots.height

                    Flow {
                        id: dots

                        anchors.left: parent.left
                        anchors.right: lock.left
                        anchors.rightMargin: Theme.gap
                        spacing: Theme.padding

                        LabelledDot {
                            label: "Gateway"
                            color: view.viewModel.gatewayOnline ? Theme.green : Theme.red
                            meaning: view.viewModel.gatewayOnline ? "online" : "offline"
                        }

                        LabelledDot {
                            label: "Voice"
                            color: !view.serviceManager.voiceEnabled ? Theme.grey
                                : view.voiceRunning ? Theme.green : Theme.red
                            meaning: !view.serviceManager.voiceEnabled ? "switched off"
                                : view.voiceRunning ? "running" : "not running"
                        }

                        LabelledDot {
                            label: "Status"
                            color: view.statusServerRunning ? Theme.green
                                : view.statusPortTaken ? Theme.yellow : Theme.red
                            meaning: view.statusServerRunning ? "running"
                                : view.statusPortTaken ? "waiting for its port" : "not running"
                        }
                    }

                    Symbol {
                        id: lock

                        anchors.right: parent.right
                        anchors.rightMargin: Theme.gap - 1
                        anchors.verticalCenter: parent.verticalCenter
                        name: view.viewModel.isSecure ? "lock.fill" : "lock.open.fill"
                        color: view.viewModel.isSecure ? Theme.green : Theme.teal
                        Accessible.ignored: false
                        Accessible.role: Accessible.Graphic
                        Accessible.name: view.viewModel.isSecure ? "encrypted" : "not encrypted"
                    }
                }

                Divider {
                    width: parent.width
                }

                AddressRow {
                    width: parent.width
                    address: view.address
                    isSecure: view.viewModel.isSecure
                }

                NoticeRow {
                    width: parent.width
                    visible: view.statusPortTaken
                    text: "Status is waiting: another program uses its port"
                }

                NoticeRow {
                    width: parent.width
                    visible: view.problem !== ""
                    text: view.problem
                }
            }
        }
    }
}
