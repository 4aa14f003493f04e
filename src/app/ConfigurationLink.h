#pragma once

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

} // namespace ostrelle
