pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The saved gateways, one more by hand, and the key that travels with the pairing code.
FocusScope {
    id: section

    required property GatewayProfiles profiles
    required property GatewaySettings settings

    required property bool showProfiles

    implicitHeight: column.implicitHeight
    onShowProfilesChanged: {
        if (!section.showProfiles) {
            section.profiles.cancelSwitch();
            section.profiles.editingProfileId = "";
        }
    }

    Column {
        id: column

        width: parent.width

        DisclosureHeading {
            width: parent.width
            focus: true
            text: "PROFILES"
            open: section.showProfiles
            onClicked: section.showProfiles = !section.showProfiles
        }

        Fold {
            width: parent.width
            gap: Theme.smallGap
            open: section.showProfiles

            Card {
                id: card

                Column {
                    width: card.availableWidth
                    spacing: Theme.gap

                    Label {
                        width: parent.width
                        visible: rows.count === 0
                        text: section.profiles.isRead ? "No saved profiles" : "Loading…"
                        secondary: true
                        wrapMode: Text.Wrap
                    }

                    Repeater {
                        id: rows

                        model: section.profiles.saved
                        onItemRemoved: (index, item) => item.takeQuestionsAlong()

                        delegate: ProfileRow {
                            width: parent?.width ?? 0
                            profiles: section.profiles
                        }
                    }

                    Divider {
                        width: parent.width
                    }

                    ManualGateway {
                        width: parent.width
                        profiles: section.profiles
                    }

                    Divider {
                        width: parent.width
                    }

                    GeminiKey {
                        width: parent.width
                        settings: section.settings
                    }
                }
            }
        }
    }
}
