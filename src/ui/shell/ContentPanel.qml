import QtQuick
import Ostrelle

// The panel's content: the tabs, the selected tab's view, and the bar with the quit action.
FocusScope {
    id: panel

    required property GatewayViewModel gatewayVM
    required property VoiceViewModel voiceVM
    required property ServiceManager serviceManager
    required property SetupManager setupManager
    required property bool statusServerRunning
    property bool projectTrackingEnabled: true
    property int selectedTab: 0
}
