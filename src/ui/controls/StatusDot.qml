import QtQuick
import Ostrelle

// A small dot in the colour of a status word.
GlowDot {
    id: dot

    required property string status

    tint: Theme.statusColor(dot.status)
    Accessible.role: Accessible.Graphic
    Accessible.name: dot.status
}
