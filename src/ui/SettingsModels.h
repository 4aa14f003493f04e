#pragma once

#include "gateway/GatewayPairing.h"
#include "gateway/TailscalePeersModel.h"

#include <QtQml/qqmlregistration.h>

#include <memory>

namespace ostrelle
{

// Makes and owns the models of one settings screen, as soon as it is given the monitor. Another
// monitor gets new models. Main thread only.
class SettingsModels : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ostrelle::GatewayViewModel *gatewayVM READ gatewayVM WRITE setGatewayVM NOTIFY
                   gatewayVMChanged REQUIRED)
    Q_PROPERTY(bool areMade READ areMade NOTIFY modelsChanged)
    Q_PROPERTY(ostrelle::GatewayProfiles *profiles READ profiles NOTIFY modelsChanged)
    Q_PROPERTY(ostrelle::GatewaySettings *settings READ settings NOTIFY modelsChanged)
    Q_PROPERTY(ostrelle::GatewayPairing *pairing READ pairing NOTIFY modelsChanged)
    Q_PROPERTY(ostrelle::TailscalePeersModel *peers READ peers NOTIFY modelsChanged)

public:
    explicit SettingsModels(QObject *parent = nullptr);
    ~SettingsModels() override;

    // The monitor must live longer, or be replaced before it goes.
    GatewayViewModel *gatewayVM() const { return m_gatewayVM; }
    void setGatewayVM(GatewayViewModel *gateway);

    // The models are null until then.
    bool areMade() const { return m_models != nullptr; }
    GatewayProfiles *profiles() const;
    GatewaySettings *settings() const;
    GatewayPairing *pairing() const;
    TailscalePeersModel *peers() const;

Q_SIGNALS:
    void gatewayVMChanged();
    void modelsChanged();

private:
    struct Models;

    GatewayViewModel *m_gatewayVM = nullptr;
    std::unique_ptr<Models> m_models;
};

} // namespace ostrelle
