#pragma once

#include "ctl/Terminal.h"

#include <QJsonObject>

namespace ostrelle
{

// What "status" tells, a subject a line.
QString statusText(const QJsonObject &status, const Terminal &terminal);

// What keeps everything from being well; empty when it is.
QStringList problemsIn(const QJsonObject &status);

} // namespace ostrelle
