#pragma once

#include "ctl/Terminal.h"

#include <QJsonObject>

namespace ostrelle
{

// What the running program tells, as text. Whatever comes from it is shown as it is told, but for
// what a terminal would take for commands.
QString agentsText(const QJsonObject &data, const Terminal &terminal);
QString projectsText(const QJsonObject &data, const Terminal &terminal);
QString cronText(const QJsonObject &data, const Terminal &terminal);
QString gatewaysText(const QJsonObject &data, const Terminal &terminal);
QString devicesText(const QJsonObject &data, const Terminal &terminal);
QString settingsText(const QJsonObject &data, const Terminal &terminal);
// What the rows of a list are called, a line each.
QString namesText(const QJsonObject &data, const Terminal &terminal);
QString setupText(const QJsonObject &data, const Terminal &terminal);

} // namespace ostrelle
