#include "gateway/SavedGatewaysModel.h"

namespace ostrelle
{

QList<SavedGatewayRow> savedGatewayRows(const OstrelleConfig::Gateway &gateway,
                                        const QString &magicDNSURL,
                                        const QHash<QString, QString> &tokenTails)
{
    const GatewayNames names(gateway, magicDNSURL);
    QList<SavedGatewayRow> rows;
    for (const SavedGateway &profile : gateway.saved.value_or(QList<SavedGateway>())) {
        const auto tail = tokenTails.constFind(profile.url);
        rows.append({.url = profile.url,
                     .displayName = names.profileDisplayName(profile),
                     .displayURL = names.profileDisplayURL(profile),
                     .isActive = profile.url == gateway.url,
                     .tokenTail = tail == tokenTails.cend() ? std::nullopt : std::optional(*tail)});
    }
    return rows;
}

void SavedGatewaysModel::show(const OstrelleConfig::Gateway &gateway, const QString &magicDNSURL,
                              const QHash<QString, QString> &tokenTails)
{
    setRows(savedGatewayRows(gateway, magicDNSURL, tokenTails));
}

QVariant SavedGatewaysModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const SavedGatewayRow &row = rows().at(index.row());
    switch (role) {
    case UrlRole:
        return row.url;
    case NameRole:
        return row.displayName;
    case DisplayUrlRole:
        return row.displayURL;
    case ActiveRole:
        return row.isActive;
    case HasTokenRole:
        return row.tokenTail ? QVariant(!row.tokenTail->isEmpty()) : QVariant();
    case TokenTailRole:
        return row.tokenTail.value_or(QString());
    default:
        return {};
    }
}

QHash<int, QByteArray> SavedGatewaysModel::roleNames() const
{
    return {{UrlRole, "url"},         {NameRole, "displayName"},  {DisplayUrlRole, "displayURL"},
            {ActiveRole, "isActive"}, {HasTokenRole, "hasToken"}, {TokenTailRole, "tokenTail"}};
}

} // namespace ostrelle

#include "moc_SavedGatewaysModel.cpp"
