#pragma once

#include "platform/WorkPool.h"

namespace ostrelle
{

// One piece of work after the other, in the order in which it was given. When the program quits, or
// a library ends it, what was given is still done, unless that takes longer than a sixth of a
// second for one of the queues. Any thread.

// Where the configuration, the preferences, the login item and the voice agent's PID are written.
WorkPool &settingsQueue();

// Where tokens are stored and moved. Apart, because a keyring may take seconds.
WorkPool &tokenQueue();

} // namespace ostrelle
