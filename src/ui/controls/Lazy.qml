import QtQuick
import Ostrelle

// Has its content only while it is active, in its own width. A Loader would do, but that of Qt 6.4
// refuses components that are bound to the file in which they are written.
FocusScope {
    id: lazy

    required property bool active
    default property Component content

    property Item item: null

    implicitWidth: lazy.item?.implicitWidth ?? 0
    implicitHeight: lazy.item?.implicitHeight ?? 0
    onActiveChanged: lazy.makeOrDrop()
    Component.onCompleted: lazy.makeOrDrop()

    function makeOrDrop() {
        if (lazy.active && !lazy.item) {
            lazy.item = lazy.content.createObject(lazy, {
                "width": Qt.binding(() => lazy.width),
                "focus": true
            }) as Item;
        } else if (!lazy.active && lazy.item) {
            lazy.item.parent = null; // it is destroyed only when the program is idle
            lazy.item.destroy();
            lazy.item = null;
        }
    }
}
