#include "control/GatewayMeant.h"

#include "gateway/GatewayAddress.h"
#include "gateway/GatewayViewModel.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

bool isCalled(const SavedGatewayRow &row, const QString &called)
{
    return row.displayURL == called || withoutPassword(row.url) == called ||
           row.displayName.compare(called, Qt::CaseInsensitive) == 0;
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
    QStringList meant;
    for (const SavedGatewayRow &row : savedGateways(context)) {
        if (row.url == called) {
            return row.url;
        }
        if (isCalled(row, called)) {
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
