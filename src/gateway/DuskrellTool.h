#pragma once

#include <QString>

#include <expected>

namespace ostrelle
{

// What the gateway monitor has the gateway's command-line tool do. The tool is found by this
// program's own search path, or else in userToolFolders(). Each call waits for the tool, at most
// five minutes for each command: background threads only.

// Binds the gateway to the loopback interface, has it publish itself through Tailscale serve, and
// restarts it. The error is a text for the user.
std::expected<void, QString> switchGatewayToTailscaleServe();

// Has the gateway make itself a new token. The error is a text for the user.
std::expected<QString, QString> renewGatewayToken();

} // namespace ostrelle
