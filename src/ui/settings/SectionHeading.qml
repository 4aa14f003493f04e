import QtQuick
import Ostrelle

// The name of a part of the settings.
Label {
    secondary: true
    font.pixelSize: Theme.captionSize
    font.weight: Font.DemiBold
    font.letterSpacing: Theme.headingSpacing
    Accessible.role: Accessible.Heading
}
