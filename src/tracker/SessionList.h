#pragma once

#include <QByteArray>
#include <QDateTime>

#include <optional>
#include <string_view>

namespace ostrelle
{

// Turns the gateway tool's list of active sessions into the agent status document: one entry for
// each agent or sub-agent, one for all cron runs. `now` becomes the entries' update time. Nothing
// when the text is no JSON object with a list of session objects.
std::optional<QByteArray> agentStatusFromSessions(std::string_view output, const QDateTime &now);

} // namespace ostrelle
