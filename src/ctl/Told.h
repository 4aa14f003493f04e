#pragma once

#include "ctl/Terminal.h"

#include <QJsonValue>

namespace ostrelle
{

// A text among what the program tells, fit for a terminal; empty where there is none.
inline QString told(const QJsonValue &object, QLatin1StringView member)
{
    return printable(object[member].toString());
}

} // namespace ostrelle
