#include "gateway/TailscalePeersModel.h"

#include "core/WhenDone.h"

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString secureURL(const TailscalePeer &peer)
{
    return u"https://"_s + peer.hostname;
}

QString nameOf(const TailscalePeer &peer)
{
    return peer.hostname.section(u'.', 0, 0);
}

// In the order in which they are tried.
QList<QUrl> healthURLs(const TailscalePeer &peer)
{
    QList<QUrl> urls;
    for (const QString &base : {secureURL(peer), u"http://"_s + peer.ip + u":18789"_s}) {
        if (const auto url = endpoint(base, u"/health"_s)) {
            urls.append(*url);
        }
    }
    return urls;
}

} // namespace

SavedGateway profileOf(const TailscalePeer &peer)
{
    return {.name = nameOf(peer), .url = secureURL(peer), .isMagicDNS = true};
}

TailscalePeersModel::TailscalePeersModel(GatewayProfiles *profiles, TailscalePlaces tailscale,
                                         std::chrono::milliseconds probeDeadline, QObject *parent)
    : RowsModel(parent)
    , m_profiles(profiles)
    , m_tailscale(std::move(tailscale))
    , m_probeDeadline(probeDeadline)
{
    connect(profiles, &GatewayProfiles::configChanged, this, &TailscalePeersModel::filter);
}

void TailscalePeersModel::loadPeers()
{
    if (m_loading) {
        return;
    }
    m_loading = true;
    whenDone(
        utilityPool().run([tool = m_tailscale] { return NetworkHelpers::getOnlinePeers(tool); }),
        this, [this](const QList<OnlinePeer> &peers) { probe(peers); });
}

void TailscalePeersModel::probe(const QList<OnlinePeer> &peers)
{
    QList<TailscalePeer> unprobed;
    for (const OnlinePeer &peer : peers) {
        unprobed.append({.hostname = peer.hostname, .ip = peer.ip});
    }
    m_probed = unprobed;
    m_unsettled = m_probed.size();
    if (m_unsettled == 0) {
        finish();
    }
    for (qsizetype i = 0; i < peers.size(); ++i) {
        probe(i, healthURLs(m_probed[i]));
    }
}

void TailscalePeersModel::probe(qsizetype peer, const QList<QUrl> &urls)
{
    if (urls.isEmpty()) {
        settle(peer, false);
        return;
    }
    m_http.send({.url = urls.first(), .deadline = m_probeDeadline},
                [this, peer, others = urls.sliced(1)](const HttpResult &result) {
                    if (result && result->succeeded()) {
                        settle(peer, true);
                    } else {
                        probe(peer, others);
                    }
                });
}

void TailscalePeersModel::settle(qsizetype peer, bool gatewayOnline)
{
    m_probed[peer].gatewayOnline = gatewayOnline;
    if (--m_unsettled == 0) {
        finish();
    }
}

void TailscalePeersModel::finish()
{
    m_peers = m_probed;
    filter();
    m_loading = false;
}

void TailscalePeersModel::filter()
{
    QList<TailscalePeer> unsaved;
    std::ranges::copy_if(m_peers, std::back_inserter(unsaved),
                         [this](const TailscalePeer &peer) { return !isSaved(peer); });
    setRows(unsaved);
}

bool TailscalePeersModel::isSaved(const TailscalePeer &peer) const
{
    const auto saved = m_profiles->config().gateway.saved.value_or(QList<SavedGateway>());
    return std::ranges::any_of(saved, [&](const SavedGateway &gateway) {
        return gateway.url == secureURL(peer) || gateway.url.contains(peer.ip);
    });
}

void TailscalePeersModel::add(int row)
{
    if (row < 0 || row >= rowCount()) {
        return;
    }
    m_profiles->addGateway(profileOf(rows().at(row)));
}

QVariant TailscalePeersModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const TailscalePeer &peer = rows().at(index.row());
    switch (role) {
    case NameRole:
        return nameOf(peer);
    case IpRole:
        return peer.ip;
    case GatewayOnlineRole:
        return peer.gatewayOnline ? QVariant(*peer.gatewayOnline) : QVariant();
    default:
        return {};
    }
}

QHash<int, QByteArray> TailscalePeersModel::roleNames() const
{
    return {{NameRole, "name"}, {IpRole, "ip"}, {GatewayOnlineRole, "gatewayOnline"}};
}

} // namespace ostrelle

#include "moc_TailscalePeersModel.cpp"
