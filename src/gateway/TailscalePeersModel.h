#pragma once

#include "gateway/GatewayProfiles.h"

namespace ostrelle
{

// One device of the tailnet.
struct TailscalePeer {
    QString hostname; // MagicDNS name without the trailing dot
    QString ip;
    std::optional<bool> gatewayOnline = std::nullopt; // absent until probed

    QString identity() const { return hostname + u'/' + ip; }
    friend bool operator==(const TailscalePeer &, const TailscalePeer &) = default;
};

// The gateway that it is saved as.
SavedGateway profileOf(const TailscalePeer &peer);

// The tailnet's online devices that are not saved as gateways yet, as of the last discovery. Main
// thread only.
class TailscalePeersModel : public RowsModel<TailscalePeer>
{
    Q_OBJECT
    Q_PROPERTY(bool loading READ loading NOTIFY loadingChanged)

public:
    enum Role { NameRole = Qt::UserRole, IpRole, GatewayOnlineRole };

    // The profiles must live longer. The deadline is that of one probe.
    explicit TailscalePeersModel(GatewayProfiles *profiles, TailscalePlaces tailscale = {},
                                 std::chrono::milliseconds probeDeadline = std::chrono::seconds(2),
                                 QObject *parent = nullptr);

    // Discovers the devices and asks all of them at once for a gateway. Does nothing while loading.
    Q_INVOKABLE void loadPeers();

    // Saves the device of that row as a gateway.
    Q_INVOKABLE void add(int row);

    bool loading() const { return m_loading; }

    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void loadingChanged();

private:
    void probe(const QList<OnlinePeer> &peers);
    void probe(qsizetype peer, const QList<QUrl> &urls);
    void settle(qsizetype peer, bool gatewayOnline);
    void finish();
    void filter();
    bool isSaved(const TailscalePeer &peer) const;

    GatewayProfiles *const m_profiles;
    const TailscalePlaces m_tailscale;
    const std::chrono::milliseconds m_probeDeadline;
    HttpClient m_http;
    QList<TailscalePeer> m_peers;  // of the last discovery, saved ones included
    QList<TailscalePeer> m_probed; // of the one under way
    qsizetype m_unsettled = 0;

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(TailscalePeersModel, bool, m_loading, false,
                                         &TailscalePeersModel::loadingChanged)
};

} // namespace ostrelle
