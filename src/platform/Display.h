#pragma once

namespace ostrelle
{

// Whether the session seems to have a display, as its environment tells. Needs no application
// object.
bool hasDisplay();

} // namespace ostrelle
