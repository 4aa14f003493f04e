import QtQuick
import Ostrelle

// The projects with their workstreams, as cards.
Item {
    id: view

    required property ProjectsViewModel viewModel
}
