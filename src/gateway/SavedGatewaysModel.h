#pragma once

#include "core/RowsModel.h"
#include "gateway/GatewayNames.h"

#include <QHash>

namespace ostrelle
{

// One saved gateway as the settings show it.
struct SavedGatewayRow {
    QString url;
    QString displayName;
    QString displayURL;
    bool isActive = false;
    // The last four characters of the stored token, empty when there is none; absent while not
    // known.
    std::optional<QString> tokenTail = std::nullopt;

    const QString &identity() const { return url; }
    friend bool operator==(const SavedGatewayRow &, const SavedGatewayRow &) = default;
};

// In their order. A tail that is not among these is not known.
QList<SavedGatewayRow> savedGatewayRows(const OstrelleConfig::Gateway &gateway,
                                        const QString &magicDNSURL,
                                        const QHash<QString, QString> &tokenTails);

// The saved gateways in their order. Main thread only.
class SavedGatewaysModel : public RowsModel<SavedGatewayRow>
{
    Q_OBJECT

public:
    // `hasToken` is undefined while it is not known.
    enum Role {
        UrlRole = Qt::UserRole,
        NameRole,
        DisplayUrlRole,
        ActiveRole,
        HasTokenRole,
        TokenTailRole
    };

    using RowsModel::RowsModel;

    void show(const OstrelleConfig::Gateway &gateway, const QString &magicDNSURL,
              const QHash<QString, QString> &tokenTails);

    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;
};

} // namespace ostrelle
