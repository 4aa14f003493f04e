pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The tailnet's devices that are not saved as gateways yet.
Column {
    id: view

    required property TailscalePeersModel peers

    property bool hasSearched: false

    readonly property bool isSearching: view.peers.loading

    spacing: Theme.gap
    onIsSearchingChanged: view.hasSearched = view.hasSearched || !view.isSearching

    SectionHeading {
        width: parent.width
        text: "TAILSCALE DEVICES"
    }

    Card {
        id: card

        width: parent.width

        Column {
            width: card.availableWidth
            spacing: Theme.gap

            Row {
                width: parent.width

                PushButton {
                    width: Math.min(implicitWidth, parent.width)
                    text: view.isSearching ? "Discovering…" : "Find Peers"
                    busy: view.isSearching
                    enabled: !view.isSearching
                    onClicked: view.peers.loadPeers()
                }
            }

            Label {
                width: parent.width
                visible: view.hasSearched && !view.isSearching && devices.count === 0
                text: "No other devices found"
                secondary: true
                wrapMode: Text.Wrap
            }

            Repeater {
                id: devices

                model: view.peers

                delegate: TailscalePeerRow {
                    required property int index

                    width: parent?.width ?? 0
                    onAdded: view.peers.add(index)
                }
            }

            Label {
                width: parent.width
                text: "Tip: After adding, tap the 🔑 icon on the profile to paste the remote gateway's token."
                secondary: true
                font.pixelSize: Theme.smallSize
                wrapMode: Text.Wrap
            }
        }
    }
}
