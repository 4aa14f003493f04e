#include "control/TailnetDevices.h"

namespace ostrelle
{

void TailnetDevices::look(const Models &models, const TailscalePlaces &tailscale, QObject *asker,
                          const std::function<void(const QList<TailscalePeer> &peers)> &use)
{
    if (!m_peers) {
        m_profiles = std::make_unique<GatewayProfiles>(models.settings, models.gatewayVM,
                                                       models.gatewayInUse);
        m_peers = std::make_unique<TailscalePeersModel>(m_profiles.get(), tailscale);
    }
    QObject::connect(m_peers.get(), &TailscalePeersModel::loadingChanged, asker,
                     [peers = m_peers.get(), use] {
                         if (!peers->loading()) {
                             use(peers->rows());
                         }
                     });
    m_peers->loadPeers();
}

} // namespace ostrelle
