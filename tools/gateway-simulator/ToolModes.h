#pragma once

#include <QByteArray>
#include <QString>

namespace ostrelle::simulator
{

// What a run of the tool comes to.
struct Outcome {
    int status = 0; // the exit status
    QByteArray output;
    QByteArray errors = {};
};

// Writes an outcome as a mode makes it and returns the exit status. A mode that is not known
// behaves; others may take their time or end the process.
int finishInMode(const QString &mode, const Outcome &outcome);

} // namespace ostrelle::simulator
