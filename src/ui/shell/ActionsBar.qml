import QtQuick
import Ostrelle

// The bar at the bottom of each tab.
Item {
    id: bar
}
