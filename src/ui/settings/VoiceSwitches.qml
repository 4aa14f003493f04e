pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// Whether there is a voice agent, and whether it starts with the program.
Column {
    id: section

    required property ServiceManager serviceManager
    required property GatewaySettings settings

    signal switched(bool isOn)

    SwitchRow {
        width: parent.width
        text: "Voice Agent"
        checked: section.serviceManager.voiceEnabled
        onToggled: section.switched(checked)
    }

    Fold {
        width: parent.width
        gap: Theme.padding
        open: section.serviceManager.voiceEnabled

        SwitchRow {
            text: "Start Voice Agent on Launch"
            checked: section.settings.autoStartVoice
            onToggled: section.settings.autoStartVoice = checked
        }
    }
}
