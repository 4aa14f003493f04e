import QtQuick
import Ostrelle

// What is wrong with the field above; not there while nothing is.
SymbolText {
    id: row

    visible: row.text !== ""
    symbol: "exclamationmark.triangle.fill"
    color: Theme.yellow
}
