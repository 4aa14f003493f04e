import Ostrelle

GatewaySettingsView {
    id: tab

    required property ContentPanel panel

    models: tab.panel.models.makeSettings(tab)
    gatewayVM: tab.panel.gatewayVM
    serviceManager: tab.panel.serviceManager
    setupManager: tab.panel.setupManager
    projectTrackingEnabled: tab.panel.projectTrackingEnabled
    onProjectTrackingToggled: enabled => tab.panel.projectTrackingEnabled = enabled
}
