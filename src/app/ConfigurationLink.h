#pragma once

#include "settings/OstrelleConfig.h"

#include <QString>

#include <optional>

namespace ostrelle
{

// What a link of the form ostrelle://config?gatewayBaseURL=…&token=… says. Both values are
// optional; an empty one counts as absent.
struct ConfigurationLink {
    std::optional<QString> gatewayBaseURL;
    std::optional<QString> token;

    // Nothing for any other link, and for one that says neither.
    static std::optional<ConfigurationLink> parse(const QString &url);

    friend bool operator==(const ConfigurationLink &, const ConfigurationLink &) = default;
};

// Makes the gateway at `base` the one in use: its saved profile is replaced or added at the end.
void adoptGateway(OstrelleConfig &config, const QString &base);

} // namespace ostrelle
