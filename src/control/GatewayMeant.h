#pragma once

#include "control/ControlServer.h"
#include "gateway/SavedGatewaysModel.h"

#include <expected>

namespace ostrelle
{

// In their order, without what is known of their tokens. Main thread only, as all of it.
QList<SavedGatewayRow> savedGateways(const ControlContext &context);

// The URL of the saved gateway that the user means, by its name or a URL as it is shown. Or what he
// is told; where he names none, too.
std::expected<QString, QString> gatewayMeant(const ControlContext &context, const QString &called);

} // namespace ostrelle
