import QtQuick
import Ostrelle

// What unfolds below something when it is opened. The content is there only as long as it can be
// seen.
Item {
    id: fold

    required property bool open
    // Between the content and what stands above it.
    property int gap: Theme.gap
    default property alias content: content.content

    property real shown: fold.open ? 1 : 0

    implicitWidth: content.implicitWidth
    implicitHeight: Math.ceil((content.implicitHeight + fold.gap) * fold.shown)
    visible: fold.shown > 0
    opacity: fold.shown
    clip: fold.shown < 1

    Behavior on shown {
        enabled: Theme.motion

        NumberAnimation {
            duration: Theme.calm
            easing.type: Easing.OutCubic
        }
    }

    Lazy {
        id: content

        y: fold.gap
        width: fold.width
        active: fold.visible
    }
}
