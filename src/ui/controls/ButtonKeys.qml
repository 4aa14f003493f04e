import QtQuick
import QtQuick.Templates as T
import Ostrelle

// What the keyboard is to a button: Return presses it as Space does, and a button that vanishes
// hands the keyboard's focus on. The button forwards its keys here.
Item {
    id: keys

    required property T.AbstractButton button

    // The button keeps the focus where nobody sees it. When it is disabled it gives the focus away,
    // but takes it back when it is enabled again, hidden or not.
    readonly property bool isLost: keys.button.activeFocus && !keys.button.visible

    // How the focus came; by "other" it only comes back.
    property int focusReason: Qt.OtherFocusReason

    signal pressed

    Keys.onReturnPressed: event => keys.press(event)
    Keys.onEnterPressed: event => keys.press(event)
    // Later, when what appears in the button's stead is there.
    onIsLostChanged: Qt.callLater(keys.handOn)

    // Only the first one of a key that is held counts.
    function press(event: KeyEvent) {
        if (!event.isAutoRepeat && keys.button.visible && keys.button.enabled) {
            keys.pressed();
        }
    }

    function handOn() {
        const next = keys.isLost ? keys.button.nextItemInFocusChain() : null;
        if (next?.visible) {
            next.forceActiveFocus(keys.focusReason);
        }
    }

    Connections {
        target: keys.button

        function onFocusReasonChanged() {
            if (keys.button.focusReason !== Qt.OtherFocusReason) {
                keys.focusReason = keys.button.focusReason;
            }
        }
    }
}
