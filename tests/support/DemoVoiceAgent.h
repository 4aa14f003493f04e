#pragma once

#include "support/ScratchHome.h"

// Puts the demo voice agent into the home, with an environment whose Python is a link. Returns a
// free port for it, which the configuration is to name.
quint16 installDemoVoiceAgent(const ScratchHome &home);
