import QtQuick
import Ostrelle

// The gateway's scheduled jobs, as cards.
Item {
    id: view

    required property CronViewModel viewModel
}
