#pragma once

#include "gateway/GatewayProfiles.h"
#include "gateway/GatewaySettings.h"
#include "gateway/PairingLink.h"
#include "gateway/QrCode.h"

namespace ostrelle
{

// Makes the QR code that hands the gateway in use to a phone. Works off the main thread, and makes
// a new code whenever something in it changes while it is shown. Main thread only.
class GatewayPairing : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool showQR READ showQR WRITE setShowQR NOTIFY showQRChanged)
    Q_PROPERTY(bool isBuilding READ isBuilding NOTIFY isBuildingChanged)
    Q_PROPERTY(ostrelle::QrCode qrCode READ qrCode NOTIFY qrCodeChanged)

public:
    // The models must live longer.
    GatewayPairing(GatewayViewModel *gateway, GatewayProfiles *profiles, GatewaySettings *settings,
                   TailscalePlaces tailscale = {}, QObject *parent = nullptr);

    bool showQR() const { return m_showQR; }
    void setShowQR(bool show);

    bool isBuilding() const { return m_isBuilding; }

    // Empty while it is not shown, while the first is being made, and when none can be made.
    QrCode qrCode() const { return m_qrCode; }

Q_SIGNALS:
    void showQRChanged();
    void isBuildingChanged();
    void qrCodeChanged();

private:
    PairingSubject subject() const;
    void rebuild();
    void finish(const QrCode &code);

    GatewayViewModel *const m_gateway;
    GatewayProfiles *const m_profiles;
    GatewaySettings *const m_settings;
    const TailscalePlaces m_tailscale;
    QString m_codeOf;        // the URL of the gateway that the code is for
    bool m_outdated = false; // something changed while a code is being made

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayPairing, bool, m_showQR, false,
                                         &GatewayPairing::showQRChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(GatewayPairing, bool, m_isBuilding, false,
                                         &GatewayPairing::isBuildingChanged)
    Q_OBJECT_BINDABLE_PROPERTY(GatewayPairing, QrCode, m_qrCode, &GatewayPairing::qrCodeChanged)
};

} // namespace ostrelle
