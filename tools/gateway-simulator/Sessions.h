#pragma once

#include "World.h"

#include <QJsonArray>

namespace ostrelle::simulator
{

// Every session of the gateway, the ones that ended among them; "ageMs" tells since when.
QJsonArray listSessions(const World &world);

} // namespace ostrelle::simulator
