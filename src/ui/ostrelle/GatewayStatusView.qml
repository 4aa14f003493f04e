pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// How the gateway can be reached, in a few lines.
Item {
    id: view

    required property GatewayViewModel viewModel
    required property ServiceManager serviceManager
    required property VoiceViewModel voiceVM
    required property bool statusServerRunning
    property bool statusPortTaken: false

    readonly property string address: view.viewModel.magicDNSURL || view.viewModel.preferredURL
    // What keeps other devices away; empty when nothing does.
    readonly property string problem: StatusWords.remoteProblem(view.viewModel.tailscaleInstalled,
        view.viewModel.magicDNSURL)

    implicitHeight: column.implicitHeight

    Column {
        id: column

        width: view.width
        spacing: Theme.gap

        Lazy {
            width: parent.width
            active: view.viewModel.showSecurityWarning
            visible: active

            SecurityWarningBanner {
                viewModel: view.viewModel
            }
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
                            light: StatusWords.gateway(view.viewModel.gatewayOnline)
                        }

                        LabelledDot {
                            label: "Voice"
                            light: StatusWords.voice(view.serviceManager.voiceEnabled, view.voiceVM.voiceRunning)
                        }

                        LabelledDot {
                            label: "Status"
                            light: StatusWords.statusServer(view.statusServerRunning, view.statusPortTaken)
                        }
                    }

                    Symbol {
                        id: lock

                        readonly property statusLight light: StatusWords.lock(view.viewModel.isSecure)

                        anchors.right: parent.right
                        anchors.rightMargin: Theme.gap - 1
                        anchors.verticalCenter: parent.verticalCenter
                        name: view.viewModel.isSecure ? "lock.fill" : "lock.open.fill"
                        color: Theme.named(lock.light.color)
                        Accessible.ignored: false
                        Accessible.role: Accessible.Graphic
                        Accessible.name: lock.light.word
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

                Lazy {
                    width: parent.width
                    active: view.statusPortTaken
                    visible: active

                    NoticeRow {
                        text: "Status is waiting: another program uses its port"
                    }
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
