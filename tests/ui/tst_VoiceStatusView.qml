import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    readonly property string others: "|~|Stop|<stop.fill>|~|Restart|<arrow.clockwise>|~"

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
        compare(told(view), "<mic.slash>:grey|Offline|Start Voice Agent|<play.fill>");
        mouseClick(Items.withText(view, "Start Voice Agent"));
        const waits = "<mic.slash>:grey|Offline|%1|In progress|<spinner>~|(%1)~";
        compare(told(view), waits.arg("Starting voice agent…"));
        tryVerify(() => fixture.voiceVM.startProblem.startsWith("Python venv not found at ")); // and waits in vain
        compare(told(view), waits.arg(fixture.voiceVM.startProblem));
        compare(view.implicitHeight, height);
    }

    function test_theKeyboardStaysInTheRow() {
        const view = viewOf('{"state": "listening"}');
        compare(told(view), "<mic.fill>:green|Listening|:green|LOCAL#59da79|Mute|<mic.fill>" + test.others);
        Items.withText(view, "Stop").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        verify(Items.withText(view, "Offline") && !Items.withText(view, "LOCAL"));
        verify(Items.withText(view, "Start Voice Agent").visualFocus);
        keyClick(Qt.Key_Return);
        keyClick(Qt.Key_Return); // says nothing to an agent that is starting
        tryVerify(() => Items.withText(view, "Mute")?.visualFocus);
    }

    function test_restartOutlivesTheView() {
        const view = viewOf('{"state": "speaking", "muted": true, "tier": "cloud"}');
        compare(told(view), "<mic.slash.fill>:red|Muted|:purple|CLOUD#d99cf7|Unmute|<mic.slash.fill>" + test.others);
        const elsewhere = createTemporaryQmlObject("import Ostrelle; PushButton {}", test);
        elsewhere.forceActiveFocus();
        Items.withText(view, "Restart").clicked();
        verify(elsewhere.activeFocus);
        verify(!fixture.voiceVM.voiceRunning && !fixture.voiceVM.isLaunching);
        view.destroy();
        tryCompare(fixture.voiceVM, "voiceRunning", true); // a start is pending: the agent's answer counts
    }
}
