#pragma once

#include <QString>

namespace ostrelle
{

// A colour by its name. What it looks like is the theme's business: models and views pass names on.
enum class NamedColor {
    TiffanyBlue, // the accent: sRGB 0.04, 0.85, 0.82
    // the desktop's standard colours
    Pink,
    Purple,
    Teal,
    Green,
    Yellow,
    Blue,
    Mint,
    Indigo,
    Red,
    Grey,
};

// The name under which the theme has it: "tiffanyBlue", "pink".
QString colorName(NamedColor color);

// The colour of a status word in any letter case; grey for words that it does not know.
NamedColor statusColor(const QString &word);

} // namespace ostrelle
