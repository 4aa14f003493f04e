pragma Singleton

import QtQuick
import Ostrelle

// Restarts the voice agent. The second half comes also when the view that asked for it is gone by
// then.
Timer {
    id: pause

    property VoiceViewModel viewModel: null

    interval: 500
    onTriggered: pause.viewModel?.start()

    function perform(viewModel: VoiceViewModel) {
        viewModel.stop();
        pause.viewModel = viewModel;
        pause.restart();
    }
}
