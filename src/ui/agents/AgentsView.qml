import QtQuick
import Ostrelle

// The agents as a spinal map. It has its own model, which polls while the view exists.
Item {
    id: view
}
