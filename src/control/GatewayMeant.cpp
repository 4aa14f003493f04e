#include "control/GatewayMeant.h"

#include "gateway/GatewayAddress.h"
#include "gateway/GatewayViewModel.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

using UrlOf = QString (*)(const SavedGatewayRow &row);

// By its URL, or else by one with which it is shown. That may be another one's too, this machine's
// have the same: the first one is meant then.
constexpr std::array<UrlOf, 3> urls{
    [](const SavedGatewayRow &row) { return row.url; },
    [](const SavedGatewayRow &row) { return withoutPassword(row.url); },
    [](const SavedGatewayRow &row) { return row.displayURL; },
};

std::optional<QString> gatewayAt(const QString &url, const QList<SavedGatewayRow> &rows)
{
    for (const UrlOf urlOf : urls) {
        const auto found = std::ranges::find(rows, url, urlOf);
        if (found != rows.end()) {
            return found->url;
        }
    }
    return std::nullopt;
}

} // namespace

QList<SavedGatewayRow> savedGateways(const ControlContext &context)
{
    return savedGatewayRows(context.models.settings.config->current().gateway,
                            context.models.gatewayVM->magicDNSURL(), {});
}

std::expected<QString, QString> gatewayMeant(const ControlContext &context, const QString &called)
{
    if (called.isEmpty()) {
        return std::unexpected(u"no gateway is named"_s);
    }
    const QList<SavedGatewayRow> rows = savedGateways(context);
    if (const auto url = gatewayAt(called, rows)) {
        return *url;
    }
    QStringList meant;
    for (const SavedGatewayRow &row : rows) {
        if (row.displayName.compare(called, Qt::CaseInsensitive) == 0) {
            meant.append(row.url);
        }
    }
    if (meant.size() == 1) {
        return meant.first();
    }
    return std::unexpected(meant.isEmpty() ? u"no gateway with that name or URL is saved"_s
                                           : u"more than one gateway has that name; say the URL"_s);
}

} // namespace ostrelle
