pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The gateway settings screen.
FocusScope {
    id: view

    required property SettingsModels models
    required property GatewayViewModel gatewayVM
    required property ServiceManager serviceManager
    required property SetupManager setupManager
    required property bool projectTrackingEnabled

    readonly property bool isShown: view.visible && Window.visibility !== Window.Hidden

    // The user switched project tracking; the owner of the flag follows.
    signal projectTrackingToggled(bool enabled)

    onIsShownChanged: {
        if (!view.isShown && view.models !== null) {
            view.hideSecrets();
        }
    }
    Keys.onEscapePressed: event => event.accepted = view.closeQuestion()

    // No typed token and no code that holds one waits behind a closed panel.
    function hideSecrets() {
        view.models.profiles.tokenInput = "";
        view.models.profiles.profileTokenInput = "";
        view.models.pairing.showQR = false;
    }

    // Closes what was asked last; false when nothing is asked.
    function closeQuestion(): bool {
        if (view.models.profiles.pendingSwitchGateway !== "") {
            view.models.profiles.cancelSwitch();
        } else if (view.models.profiles.editingProfileId !== "") {
            view.models.profiles.editingProfileId = "";
        } else if (view.models.profiles.showTokenField) {
            view.models.profiles.showTokenField = false;
        } else {
            return false;
        }
        return true;
    }

    Lazy {
        anchors.fill: parent
        focus: true
        active: view.models !== null

        ScrollPane {
            height: view.height

            Column {
                x: Theme.pagePadding
                width: parent.width - 2 * Theme.pagePadding
                topPadding: Theme.pagePadding
                bottomPadding: Theme.pagePadding
                spacing: Theme.sectionGap

                ActiveGateway {
                    width: parent.width
                    gatewayVM: view.gatewayVM
                    profiles: view.models.profiles
                    pairing: view.models.pairing
                }

                TailscalePeersView {
                    width: parent.width
                    peers: view.models.peers
                }

                SavedProfiles {
                    width: parent.width
                    profiles: view.models.profiles
                    settings: view.models.settings
                }

                AdvancedSettings {
                    width: parent.width
                    gatewayVM: view.gatewayVM
                    serviceManager: view.serviceManager
                    setupManager: view.setupManager
                    settings: view.models.settings
                    projectTrackingEnabled: view.projectTrackingEnabled
                    onProjectTrackingToggled: enabled => view.projectTrackingToggled(enabled)
                }
            }
        }
    }
}
