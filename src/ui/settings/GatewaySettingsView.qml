import QtQuick
import Ostrelle

// The gateway settings screen.
Item {
    id: view

    required property GatewayViewModel gatewayVM
    required property ServiceManager serviceManager
    required property SetupManager setupManager
    required property bool projectTrackingEnabled

    // The user switched project tracking; the owner of the flag follows.
    signal projectTrackingToggled(bool enabled)
}
