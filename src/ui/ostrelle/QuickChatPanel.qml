import QtQuick
import Ostrelle

// The one-line chat with the gateway.
Item {
    id: panel

    required property QuickChatVM chatVM
    // The base URL of the configured gateway.
    required property string gatewayURL
}
