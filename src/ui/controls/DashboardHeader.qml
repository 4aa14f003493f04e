import QtQuick
import Ostrelle

// The top of a dashboard: what it is about, how much of it, and the button that loads it again.
Item {
    id: header

    required property string label
    required property string title
    property color accent: Theme.tiffanyBlue
    // How many of how many, for instance "3/5"; empty: it is not told.
    property string count: ""
    property string countDescription: ""
    property string status: ""
    property bool isLoading: false

    signal refreshRequested

    implicitHeight: texts.height

    Column {
        id: texts

        anchors.left: parent.left
        anchors.right: tools.left
        anchors.rightMargin: Theme.gap
        spacing: Theme.lineGap

        Label {
            width: parent.width
            text: header.label
            color: header.accent
            font.pixelSize: Theme.captionSize
            font.weight: Font.DemiBold
            font.letterSpacing: Theme.headingSpacing
        }

        Label {
            width: parent.width
            text: header.title
            font.pixelSize: Theme.titleSize
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }

        Label {
            width: parent.width
            visible: header.status !== ""
            text: header.status
            secondary: true
            font.pixelSize: Theme.smallSize
            wrapMode: Text.Wrap
        }
    }

    Row {
        id: tools

        anchors.right: parent.right
        anchors.verticalCenter: texts.verticalCenter
        spacing: Theme.gap

        Spinner {
            anchors.verticalCenter: parent.verticalCenter
            visible: header.isLoading
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            visible: header.count !== ""
            text: header.count
            color: Theme.green
            font.pixelSize: Theme.headingSize
            font.weight: Font.DemiBold
            Accessible.description: header.countDescription
        }

        IconButton {
            anchors.verticalCenter: parent.verticalCenter
            symbol: "arrow.clockwise"
            text: "Refresh"
            raised: true
            onClicked: header.refreshRequested()
        }
    }
}
