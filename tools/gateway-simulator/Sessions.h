#pragma once

#include "World.h"

#include <QJsonArray>

namespace ostrelle::simulator
{

// Every session of the gateway, the ones that ended among them; "updatedAt" tells when (epoch ms).
QJsonArray listSessions(const World &world);

} // namespace ostrelle::simulator
