import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "VoiceStatusView"
    height: 300

    Component {
        id: voiceView

        VoiceStatusView {
            width: 356
            viewModel: fixture.voiceVM
        }
    }

    // The view of an agent that gives this answer.
    function viewOf(status: string): Item {
        fixture.startVoiceAgent(status);
        fixture.restart();
        tryCompare(fixture.voiceVM, "voiceRunning", true);
        return createTemporaryObject(voiceView, test);
    }

    function test_offlineUntilStarted() {
        const view = createTemporaryObject(voiceView, test);
        const height = view.implicitHeight;
        compare(Items.texts(view), ["Offline", "Start Voice Agent", "Start Voice Agent"]);
        verify(Qt.colorEqual(Items.symbol(view, "mic.slash").color, Theme.grey));

        mouseClick(Items.withText(view, "Start Voice Agent"));
        compare(Items.texts(view)[0], "Offline");
        tryVerify(() => Items.texts(view)[1].startsWith("Python venv not found at ")); // and waits in vain
        compare(view.implicitHeight, height);
    }

    function test_theKeyboardStaysInTheRow() {
        const view = viewOf('{"state": "listening"}');
        verify(!Items.withText(view, "Start Voice Agent"));
        Items.withText(view, "Stop").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        verify(Items.withText(view, "Offline") && !Items.withText(view, "LOCAL"));
        verify(Items.withText(view, "Start Voice Agent").visualFocus);
        keyClick(Qt.Key_Return);
        keyClick(Qt.Key_Return); // says nothing to an agent that is starting
        tryVerify(() => Items.withText(view, "Mute")?.visualFocus);
    }

    function test_restartOutlivesTheView() {
        const view = viewOf('{"state": "listening"}');
        const elsewhere = createTemporaryQmlObject("import Ostrelle; PushButton {}", test);
        elsewhere.forceActiveFocus();
        Items.withText(view, "Restart").clicked();
        verify(elsewhere.activeFocus);
        verify(!fixture.voiceVM.voiceRunning && !fixture.voiceVM.isLaunching);
        view.destroy();
        tryCompare(fixture.voiceVM, "voiceRunning", true); // a start is pending: the agent's answer counts
    }
}
