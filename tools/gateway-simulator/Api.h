#pragma once

#include "HttpMessage.h"
#include "World.h"

namespace ostrelle::simulator
{

// The reply of a well-behaved gateway. A chat goes into the session log.
Reply answer(const World &world, const Request &request);

} // namespace ostrelle::simulator
