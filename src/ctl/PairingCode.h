#pragma once

#include "ctl/Terminal.h"

#include <QStringList>

namespace ostrelle
{

// What the terminal shows where there are no colours.
enum class Background { Dark, Light };

// The code in characters, for a camera: half blocks, or pairs of characters where there are only
// those of ASCII. With colours it is black on white whatever the terminal's own are. The modules
// come as rows of "#" and blanks. Absent when the terminal is too narrow; one that is too low shows
// it whole once it is higher.
std::optional<QString> pairingCode(const QStringList &rows, const Terminal &terminal,
                                   Background background);

} // namespace ostrelle
