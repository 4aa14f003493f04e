#pragma once

#include "gateway/TailscalePeersModel.h"
#include "state/Models.h"

#include <functional>
#include <memory>

namespace ostrelle
{

// The tailnet's devices that are not saved yet, for all who ask ostrellectl: however many ask and
// go, one look is under way. Main thread only.
class TailnetDevices
{
public:
    // The models must live longer. Calls `use` with the devices that the next look finds, or the
    // one that is under way; not at all once the asker is gone.
    void look(const Models &models, const TailscalePlaces &tailscale, QObject *asker,
              const std::function<void(const QList<TailscalePeer> &peers)> &use);

private:
    std::unique_ptr<GatewayProfiles> m_profiles; // made when somebody first asks
    std::unique_ptr<TailscalePeersModel> m_peers;
};

} // namespace ostrelle
