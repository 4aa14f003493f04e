import QtQuick
import Ostrelle

// Says above a field what it is for, also when the field is filled. A screen reader has that from
// the field itself.
Label {
    required property LineField field

    text: field.accessibleName
    secondary: true
    font.pixelSize: Theme.smallSize
    wrapMode: Text.Wrap
    Accessible.ignored: true
}
