#pragma once

#include <QString>

#include <expected>

namespace ostrelle
{

// What the gateway's command-line tool does for the gateway monitor. The tool is the one on this
// program's own search path. Each call waits for the tool, for at most five minutes a command:
// background threads only.

// Binds the gateway to the loopback, has it publish itself through Tailscale serve, and restarts
// it. The error is the text for the user.
std::expected<void, QString> switchGatewayToTailscaleServe();

// Has the gateway make itself a new token. An empty text when any of that fails.
QString renewGatewayToken();

} // namespace ostrelle
