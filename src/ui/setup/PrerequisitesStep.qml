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
        label: "Xcode CLI Tools"
        ok: section.setupManager.hasXcodeCLT
        note: section.setupManager.xcodeCLTNote
        advice: "here: gcc or clang, then “Re-check” below"
        commands: [section.setupManager.compilerCommand]
    }

    CheckRow {
        width: parent.width
        label: "Homebrew"
        ok: section.setupManager.hasBrew
        note: section.setupManager.brewNote
        commands: [section.setupManager.brewCommand]
    }

    CheckRow {
        width: parent.width
        label: "Node.js"
        ok: section.setupManager.hasNode
        commands: [section.setupManager.nodeCommand]
    }

    CheckRow {
        width: parent.width
        label: "Duskrell"
        ok: section.setupManager.hasDuskrell
        advice: "here: “Install Everything” below"
    }

    CheckRow {
        width: parent.width
        label: "Tailscale"
        ok: section.setupManager.hasTailscale
        advice: "here: what this page says, then the command"
        commands: ["https://tailscale.com/download/linux", "sudo tailscale up"]
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
