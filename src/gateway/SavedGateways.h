#pragma once

#include "gateway/GatewayAddress.h"
#include "settings/OstrelleConfig.h"

namespace ostrelle
{

// What a user who types an address or a URL means; an address alone is this machine's usual way,
// "http://box:18789".
std::expected<SavedGateway, AddressProblem> gatewayTyped(const QString &typed);

// What the user is told of it then.
QString gatewayNotAdded(AddressProblem problem);

// At the end; nothing when one with that URL is saved already.
void addSaved(OstrelleConfig::Gateway &gateway, const SavedGateway &profile);

void removeSaved(OstrelleConfig::Gateway &gateway, const QString &url);

} // namespace ostrelle
