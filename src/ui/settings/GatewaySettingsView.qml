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

    property bool showProfiles: false
    property bool showAdvanced: false

    readonly property bool isShown: view.visible && Window.visibility !== Window.Hidden

    // The user switched project tracking; the owner of the flag follows.
    signal projectTrackingToggled(bool enabled)

    onIsShownChanged: {
        if (!view.isShown && view.models !== null) {
            view.hideSecrets();
        }
    }
    Keys.onEscapePressed: event => event.accepted = view.closeQuestion()

    // What is to be had again when the view is made anew.
    function keepsake(): var {
        return {
            y: page.item.contentY,
            showProfiles: view.showProfiles,
            showAdvanced: view.showAdvanced,
            manualURL: view.models.profiles.manualURL,
            gateway: view.models.profiles.activeGatewayURL,
            showTokenField: view.models.profiles.showTokenField,
            editingProfileId: view.models.profiles.editingProfileId
        };
    }

    function restore(kept: var) {
        view.showProfiles = kept.showProfiles;
        view.showAdvanced = kept.showAdvanced;
        view.models.profiles.manualURL = kept.manualURL;
        view.models.profiles.showTokenField = kept.showTokenField
            && kept.gateway === view.models.profiles.activeGatewayURL;
        view.models.profiles.editingProfileId = kept.editingProfileId;
        page.item.restore(kept);
    }

    // No typed token and no code that holds one waits behind a closed panel.
    function hideSecrets() {
        view.models.profiles.tokenInput = "";
        view.models.profiles.profileTokenInput = "";
        view.models.pairing.showQR = false;
    }

    // False when the key does not scroll.
    function turnPage(key: int): bool {
        return page.item.turnPage(key);
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
        id: page

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
                    showProfiles: view.showProfiles
                    onShowProfilesChanged: view.showProfiles = showProfiles
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
                    showAdvanced: view.showAdvanced
                    onShowAdvancedChanged: view.showAdvanced = showAdvanced
                    onProjectTrackingToggled: enabled => view.projectTrackingToggled(enabled)
                    onVoiceSwitched: isOn => view.models.switchVoice(isOn)
                }
            }
        }
    }
}
