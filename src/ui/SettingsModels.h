#pragma once

#include "gateway/GatewayPairing.h"
#include "gateway/TailscalePeersModel.h"
#include "state/Models.h"
#include "state/VoiceSwitch.h"

#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

// The models of one settings screen, in the order in which they need each other. Main thread only.
class SettingsModels : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by PanelModels")
    Q_PROPERTY(ostrelle::GatewayProfiles *profiles READ profiles CONSTANT)
    Q_PROPERTY(ostrelle::GatewaySettings *settings READ settings CONSTANT)
    Q_PROPERTY(ostrelle::GatewayPairing *pairing READ pairing CONSTANT)
    Q_PROPERTY(ostrelle::TailscalePeersModel *peers READ peers CONSTANT)

public:
    explicit SettingsModels(const Models &models, QObject *parent = nullptr)
        : QObject(parent)
        , m_profiles(models.settings, models.gatewayVM, models.gatewayInUse)
        , m_settings(models.gatewaySettings)
        , m_services(models.serviceManager)
        , m_pairing(models.gatewayVM, &m_profiles, m_settings)
        , m_peers(&m_profiles)
    {
        m_settings->lookAtLoginItem();
    }

    Q_INVOKABLE void switchVoice(bool isOn)
    {
        ostrelle::switchVoice(*m_services, *m_settings, isOn);
    }

    GatewayProfiles *profiles() { return &m_profiles; }
    GatewaySettings *settings() { return m_settings; }
    GatewayPairing *pairing() { return &m_pairing; }
    TailscalePeersModel *peers() { return &m_peers; }

private:
    GatewayProfiles m_profiles;
    GatewaySettings *const m_settings;
    ServiceManager *const m_services;
    GatewayPairing m_pairing;
    TailscalePeersModel m_peers;
};

} // namespace ostrelle
