import QtQuick
import Ostrelle

// The first-run wizard, driven by the setup manager.
Item {
    id: sheet

    required property SetupManager setupManager

    // The user wants the sheet closed.
    signal done
}
