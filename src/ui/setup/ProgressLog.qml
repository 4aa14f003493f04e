pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Ostrelle

// What the installation says, a line each. It stays at the newest line until the user scrolls away
// from it.
Card {
    id: log

    required property SetupManager setupManager

    readonly property int count: lines.count
    property bool followsLast: true

    padding: Theme.gap
    outline: lines.activeFocus ? Theme.focusRing : Theme.hairline
    implicitHeight: 10 * Theme.smallSize

    ListView {
        id: lines

        width: log.availableWidth
        height: log.availableHeight
        clip: true
        model: log.setupManager.statusMessages
        spacing: Theme.lineGap
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        Accessible.role: Accessible.List
        Accessible.name: "Progress"
        onMovementStarted: log.followsLast = false
        onMovementEnded: log.followsLast = lines.atYEnd
        onCountChanged: log.followsLast = log.followsLast || lines.count === 0
        onContentHeightChanged: {
            if (log.followsLast) {
                lines.positionViewAtEnd();
            }
        }

        Keys.onUpPressed: lines.flick(0, 4 * lines.height)
        Keys.onDownPressed: lines.flick(0, -4 * lines.height)

        T.ScrollBar.vertical: ThinScrollBar {}

        delegate: SelectableText {
            required property string message

            width: lines.width
            content: message
            color: Theme.textSecondary
            font.pixelSize: Theme.smallSize
        }
    }
}
