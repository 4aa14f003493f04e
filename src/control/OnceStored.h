#pragma once

#include "control/ControlServer.h"
#include "control/Question.h"

namespace ostrelle
{

// Answers once what was set is in the preferences' file, or fails: it holds for this run then. Main
// thread only.
void answerOnceStored(const ControlContext &context, Question *question, const QJsonObject &data);

} // namespace ostrelle
