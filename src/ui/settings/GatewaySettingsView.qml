pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The gateway settings screen.
FocusScope {
    id: view

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
        if (!view.isShown && models.areMade) {
            view.hideSecrets();
        }
    }
    Keys.onEscapePressed: event => event.accepted = view.closeQuestion()

    // What is to be had again when the view is made anew.
    function keepsake(): var {
        return {
            y: page.item?.contentY ?? 0,
            showProfiles: view.showProfiles,
            showAdvanced: view.showAdvanced,
            manualURL: models.profiles?.manualURL ?? "",
            showTokenField: models.profiles?.showTokenField ?? false,
            editingProfileId: models.profiles?.editingProfileId ?? ""
        };
    }

    function restore(kept: var) {
        view.showProfiles = kept.showProfiles;
        view.showAdvanced = kept.showAdvanced;
        models.profiles.manualURL = kept.manualURL;
        models.profiles.showTokenField = kept.showTokenField;
        models.profiles.editingProfileId = kept.editingProfileId;
        page.item.restore(kept);
    }

    // No typed token and no code that holds one waits behind a closed panel.
    function hideSecrets() {
        models.profiles.tokenInput = "";
        models.profiles.profileTokenInput = "";
        models.pairing.showQR = false;
    }

    // Closes what was asked last; false when nothing is asked.
    function closeQuestion(): bool {
        if (!models.areMade) {
            return false;
        }
        if (models.profiles.pendingSwitchGateway !== "") {
            models.profiles.cancelSwitch();
        } else if (models.profiles.editingProfileId !== "") {
            models.profiles.editingProfileId = "";
        } else if (models.profiles.showTokenField) {
            models.profiles.showTokenField = false;
        } else {
            return false;
        }
        return true;
    }

    SettingsModels {
        id: models

        gatewayVM: view.gatewayVM
    }

    Lazy {
        id: page

        anchors.fill: parent
        focus: true
        active: models.areMade

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
                    profiles: models.profiles
                    pairing: models.pairing
                }

                TailscalePeersView {
                    width: parent.width
                    peers: models.peers
                }

                SavedProfiles {
                    width: parent.width
                    showProfiles: view.showProfiles
                    onShowProfilesChanged: view.showProfiles = showProfiles
                    profiles: models.profiles
                    settings: models.settings
                }

                AdvancedSettings {
                    width: parent.width
                    gatewayVM: view.gatewayVM
                    serviceManager: view.serviceManager
                    setupManager: view.setupManager
                    settings: models.settings
                    projectTrackingEnabled: view.projectTrackingEnabled
                    showAdvanced: view.showAdvanced
                    onShowAdvancedChanged: view.showAdvanced = showAdvanced
                    onProjectTrackingToggled: enabled => view.projectTrackingToggled(enabled)
                }
            }
        }
    }
}
