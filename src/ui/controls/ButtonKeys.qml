import QtQuick
import QtQuick.Templates as T
import Ostrelle

// What the keyboard is to a button: Return presses it as Space does, and a button that vanishes
// hands the keyboard's focus on. The button forwards its keys here.
Item {
    id: keys

    required property T.AbstractButton button

    signal pressed

    Keys.onReturnPressed: event => keys.press(event)
    Keys.onEnterPressed: event => keys.press(event)

    // Only the first one of a key that is held counts.
    function press(event: KeyEvent) {
        if (!event.isAutoRepeat && keys.button.visible && keys.button.enabled) {
            keys.pressed();
        }
    }

    LostFocus {
        control: keys.button
        controlFocusReason: keys.button.focusReason
    }
}
