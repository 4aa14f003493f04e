pragma Singleton

import QtQuick
import Ostrelle

// Every colour, size and duration of the panel. Views use these names, never numbers of their own.
QtObject {
    id: theme

    // How much larger than designed the desktop wants its texts.
    property real textScale: 1
    // False when the desktop asks for reduced motion: nothing moves that need not.
    property bool motion: true

    // Surfaces
    readonly property color background: "#0F0F1F"
    readonly property color material: theme.faded(theme.background, 0.92) // with a compositor
    // The lightest that texts stand on: a card under the pointer, before a white desktop
    readonly property color lightestGround: Qt.tint(Qt.tint("white", theme.material), theme.surfaceHovered)
    readonly property color surface: Qt.rgba(1, 1, 1, 0.05)
    readonly property color surfaceHovered: Qt.rgba(1, 1, 1, 0.09)
    readonly property color surfacePressed: Qt.rgba(1, 1, 1, 0.14)
    readonly property color surfaceRaised: Qt.rgba(1, 1, 1, 0.12)
    readonly property color field: Qt.rgba(1, 1, 1, 0.06)
    readonly property color hairline: Qt.rgba(1, 1, 1, 0.08)
    readonly property color sheet: "#17172A"

    // Texts
    readonly property color textPrimary: Qt.rgba(1, 1, 1, 0.92)
    readonly property color textSecondary: Qt.rgba(1, 1, 1, 0.60)
    readonly property color textDisabled: Qt.rgba(1, 1, 1, 0.35)
    readonly property color textOnAccent: "#06201F"

    // Accents
    readonly property color tiffanyBlue: Qt.rgba(0.04, 0.85, 0.82, 1)
    readonly property color teal: "#40C8E0"
    readonly property color green: "#30D158"
    readonly property color red: "#FF453A"
    readonly property color yellow: "#FFD60A"
    readonly property color blue: "#0A84FF"
    readonly property color purple: "#BF5AF2"
    readonly property color pink: "#FF375F"
    readonly property color mint: "#63E6E2"
    readonly property color indigo: "#5E5CE6"
    readonly property color cyan: "#64D2FF"
    readonly property color grey: "#98989D"
    readonly property color focusRing: tiffanyBlue
    readonly property color selection: faded(tiffanyBlue, 0.4)

    // How opaque: a surface in an accent, a word's one, its outline, and what cannot be used now
    readonly property real washOpacity: 0.14
    readonly property real capsuleOpacity: 0.2
    readonly property real outlineOpacity: 0.3
    readonly property real disabledOpacity: 0.45

    // Text sizes, in pixels
    readonly property int captionSize: scaled(10)
    readonly property int smallSize: scaled(11)
    readonly property int bodySize: scaled(12)
    readonly property int controlSize: scaled(13)
    readonly property int headingSize: scaled(15)
    readonly property int titleSize: scaled(20)
    readonly property string monospaced: "monospace"
    readonly property string emojiFont: "Noto Color Emoji" // the program brings it along
    readonly property real headingSpacing: 1 // between the letters of a heading in capitals

    // Distances, on a grid of eight
    readonly property int gap: 8
    readonly property int smallGap: 4
    readonly property int lineGap: 2 // between lines that belong together
    readonly property int symbolGap: 6 // between a symbol and its text
    readonly property int padding: 12
    readonly property int pagePadding: 12
    readonly property int sectionGap: 20 // between two parts of a page
    readonly property int radius: 12
    readonly property int smallRadius: 8
    readonly property int hitArea: 28
    readonly property int dotSize: 8
    readonly property int lineWidth: 3 // of a line that shows progress
    readonly property int focusWidth: 2 // of the ring around what the keyboard is at
    readonly property int fieldWidth: 160
    readonly property int fieldPadding: 10
    readonly property int fieldVerticalPadding: 6
    readonly property int switchWidth: 34
    readonly property int switchHeight: 20
    readonly property int switchMargin: 2 // around the knob
    readonly property int scrollBarWidth: 8
    readonly property int scrollBarMargin: 2 // around what shows the place
    readonly property int qrSize: 288
    readonly property int helpWidth: 280

    // The panel
    readonly property int tabGap: 3 // between a tab's symbol and its name
    readonly property int actionsPadding: 14 // beside the actions at the bottom
    readonly property int chatIconWidth: scaled(14)
    readonly property int setupPadding: 10
    readonly property int setupIndent: scaled(19) // of a step below its title

    // The agents' canvas
    readonly property int bubbleHalo: 8 // around a bubble
    readonly property int lightSize: 6 // of what travels along a line
    readonly property int spineWidth: 12
    readonly property int bubblePulse: 3200 // one way
    readonly property int bubbleRing: 2000 // one way
    readonly property int canvasStep: 40 // between two frames
    readonly property real branchBow: 0.25 // of its length
    readonly property int spineFlow: 6000
    readonly property int branchFlow: 2400

    // Durations, in milliseconds; none without motion
    readonly property int quick: motion ? 120 : 0
    readonly property int calm: motion ? 200 : 0
    readonly property int spinnerTurn: 1200
    readonly property int helpDelay: 500 // the pointer's rest before help appears

    // How long a control says that it did what it was asked for
    readonly property int answerTime: 1200

    // The colour of that name among the accents; a model's "gray" and "secondary" are known too.
    function named(name: string): color {
        switch (name) {
        case "gray":
            return theme.grey;
        case "secondary":
            return theme.textSecondary;
        default:
            return theme[name] ?? theme.grey;
        }
    }

    function statusColor(word: string): color {
        return theme.named(StatusWords.colorName(word));
    }

    // The same colour, so much lighter that a small text in it can be read (4.5 to 1) wherever it
    // stands, before a white desktop too. The text may stand on a wash of its own colour.
    function legible(color: color, washOpacity: real): color {
        return TextColors.legible(color, theme.lightestGround, washOpacity);
    }

    // The same colour, more or less opaque.
    function faded(color: color, opacity: real): color {
        return Qt.rgba(color.r, color.g, color.b, color.a * opacity);
    }

    // The beginning of what nobody would read: to lay out one endless word takes time that grows
    // with its square.
    function shortened(text: string): string {
        const most = 10000; // characters
        return text.length > most ? text.slice(0, most) + "…" : text;
    }

    function scaled(size: real): int {
        return Math.round(size * theme.textScale);
    }
}
