#include "ui/SettingsModels.h"

namespace ostrelle
{

// In the order in which they use each other.
struct SettingsModels::Models {
    explicit Models(GatewayViewModel *gateway)
        : profiles(gateway)
        , pairing(gateway, &profiles, &settings)
        , peers(&profiles)
    {
    }

    GatewayProfiles profiles;
    GatewaySettings settings;
    GatewayPairing pairing;
    TailscalePeersModel peers;
};

SettingsModels::SettingsModels(QObject *parent)
    : QObject(parent)
{
}

SettingsModels::~SettingsModels() = default;

void SettingsModels::setGatewayVM(GatewayViewModel *gateway)
{
    if (m_gatewayVM == gateway) {
        return;
    }
    m_gatewayVM = gateway;
    Q_EMIT gatewayVMChanged();
    {
        // The old models live until views have let go of them.
        const auto old = std::exchange(m_models, nullptr);
        Q_EMIT modelsChanged();
    }
    if (gateway != nullptr) {
        m_models = std::make_unique<Models>(gateway);
        Q_EMIT modelsChanged();
    }
}

GatewayProfiles *SettingsModels::profiles() const
{
    return m_models ? &m_models->profiles : nullptr;
}

GatewaySettings *SettingsModels::settings() const
{
    return m_models ? &m_models->settings : nullptr;
}

GatewayPairing *SettingsModels::pairing() const
{
    return m_models ? &m_models->pairing : nullptr;
}

TailscalePeersModel *SettingsModels::peers() const
{
    return m_models ? &m_models->peers : nullptr;
}

} // namespace ostrelle

#include "moc_SettingsModels.cpp"
