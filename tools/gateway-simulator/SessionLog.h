#pragma once

#include "World.h"

// The main agent's session log: one JSON record a line, a new file each day (UTC).
namespace ostrelle::simulator::sessionlog
{

// Appends a question of the user and the agent's answer.
void appendExchange(const World &world, const QString &question, const QString &answer);

// Gives a log that does not exist yet the turns of the last quarter of an hour.
void begin(const World &world);

// Appends what happened since an instant, but no more than a quarter of an hour of it: questions
// and answers, heartbeats, tools' results.
void play(const World &world, qint64 sinceMs);

} // namespace ostrelle::simulator::sessionlog
