import QtQuick
import Ostrelle

// The first step: the tools that everything else needs, and their installation.
SetupSection {
    id: section

    required property SetupManager setupManager

    title: "1. Prerequisites"
    step: 1

    CheckRow {
        width: parent.width
        check: section.setupManager.checks.compiler
    }

    CheckRow {
        width: parent.width
        check: section.setupManager.checks.brew
    }

    CheckRow {
        width: parent.width
        check: section.setupManager.checks.node
    }

    CheckRow {
        width: parent.width
        check: section.setupManager.checks.duskrell
    }

    CheckRow {
        width: parent.width
        check: section.setupManager.checks.tailscale
    }

    InstallBlock {
        width: parent.width
        visible: !section.setupManager.hasDuskrell || !section.setupManager.hasTailscale
        setupManager: section.setupManager
    }

    // Also when nothing is left to install.
    Label {
        width: parent.width
        visible: section.setupManager.installProblem !== ""
        text: section.setupManager.installProblem
        color: Theme.legible(Theme.red, 0)
        font.pixelSize: Theme.smallSize
        wrapMode: Text.Wrap
    }
}
