import QtQuick
import Ostrelle

// Hands the keyboard's focus on when a control that has it vanishes: the control keeps it where
// nobody sees it. When it is disabled it gives the focus away, but takes it back when it is enabled
// again, hidden or not.
Item {
    id: lost

    required property Item control
    required property int controlFocusReason

    readonly property bool isLost: lost.control.activeFocus && !lost.control.visible

    // How the focus came; by "other" it only comes back.
    property int focusReason: Qt.OtherFocusReason

    // Later, when what appears in the control's stead is there.
    onIsLostChanged: Qt.callLater(lost.handOn)

    function handOn() {
        const next = lost.isLost ? lost.control.nextItemInFocusChain() : null;
        if (next?.visible) {
            next.forceActiveFocus(lost.focusReason);
        }
    }

    onControlFocusReasonChanged: {
        if (lost.controlFocusReason !== Qt.OtherFocusReason) {
            lost.focusReason = lost.controlFocusReason;
        }
    }
}
