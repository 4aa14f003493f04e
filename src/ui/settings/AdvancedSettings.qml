pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// What is seldom switched.
FocusScope {
    id: section

    required property GatewayViewModel gatewayVM
    required property ServiceManager serviceManager
    required property SetupManager setupManager
    required property GatewaySettings settings
    required property bool projectTrackingEnabled

    required property bool showAdvanced

    signal projectTrackingToggled(bool enabled)
    signal voiceSwitched(bool isOn)

    implicitHeight: column.implicitHeight

    Column {
        id: column

        width: parent.width

        DisclosureHeading {
            width: parent.width
            focus: true
            text: "ADVANCED"
            open: section.showAdvanced
            onClicked: section.showAdvanced = !section.showAdvanced
        }

        Fold {
            width: parent.width
            gap: Theme.smallGap
            open: section.showAdvanced

            Card {
                id: card

                Column {
                    width: card.availableWidth
                    spacing: Theme.padding

                    MagicDNSSwitch {
                        width: parent.width
                        gatewayVM: section.gatewayVM
                    }

                    SwitchRow {
                        width: parent.width
                        text: "Launch at Login"
                        checked: section.settings.launchAtLogin
                        onToggled: section.settings.launchAtLogin = checked
                    }

                    VoiceSwitches {
                        width: parent.width
                        serviceManager: section.serviceManager
                        settings: section.settings
                        onSwitched: isOn => section.voiceSwitched(isOn)
                    }

                    SwitchRow {
                        width: parent.width
                        text: "Project Tracking"
                        caption: "Automatically discovers and tracks projects based on your conversations."
                        checked: section.projectTrackingEnabled
                        onToggled: {
                            section.settings.projectTrackingEnabled = checked;
                            section.projectTrackingToggled(checked);
                        }
                    }

                    Flow {
                        width: parent.width
                        spacing: Theme.gap

                        PushButton {
                            width: Math.min(implicitWidth, parent.width)
                            text: "Debug Log"
                            onClicked: section.gatewayVM.openDebugLog()
                        }

                        PushButton {
                            width: Math.min(implicitWidth, parent.width)
                            text: "Run Setup Again…"
                            onClicked: {
                                section.setupManager.runChecks();
                                section.setupManager.showSetup = true;
                            }
                        }
                    }
                }
            }
        }
    }
}
