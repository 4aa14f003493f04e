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
    }

    CheckRow {
        width: parent.width
        label: "Homebrew"
        ok: section.setupManager.hasBrew
        note: section.setupManager.brewNote
    }

    CheckRow {
        width: parent.width
        label: "Node.js"
        ok: section.setupManager.hasNode
    }

    CheckRow {
        width: parent.width
        label: "Duskrell"
        ok: section.setupManager.hasDuskrell
    }

    CheckRow {
        width: parent.width
        label: "Tailscale"
        ok: section.setupManager.hasTailscale
    }

    InstallBlock {
        width: parent.width
        visible: !section.setupManager.hasDuskrell || !section.setupManager.hasTailscale
        setupManager: section.setupManager
    }
}
