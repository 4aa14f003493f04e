#pragma once

#include "gateway/StandInGateway.h"
#include "setup/SetupHome.h"
#include "ui/Panel.h"
#include "ui/QmlTypes.h"

#include <QObject>

#include <memory>

// The world around a view under test: a home of its own, whoever answers there, and the models that
// the program makes. The tests see it as `fixture`.
class Fixture : public QObject
{
    Q_OBJECT
    Q_PROPERTY(ostrelle::GatewayViewModel *gatewayVM READ gatewayVM NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::ServiceManager *serviceManager READ serviceManager NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::VoiceViewModel *voiceVM READ voiceVM NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::SetupManager *setupManager READ setupManager NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::StatusServer *statusServer READ statusServer NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::PanelModels *models READ models NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::GatewaySettings *settings READ settings NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::TailscalePeersModel *peers READ peers NOTIFY madeAnew)

public:
    Fixture() { reset(); }

    // A new home with nothing in it but a configuration, and nobody who answers.
    Q_INVOKABLE void reset();

    // Makes the models anew, as a start of the program with the files that are there now does.
    Q_INVOKABLE void restart();

    // Writes a file below the home.
    Q_INVOKABLE void write(const QString &relative, const QString &content) const;
    Q_INVOKABLE QString read(const QString &relative) const;

    // A shell script that is a tool from now on, for instance "tailscale"; none without a body.
    Q_INVOKABLE void tool(const QString &name, const QString &body) const;

    // A model that writes down, in the file "asked", which program it runs.
    Q_INVOKABLE ostrelle::ProjectsViewModel *projectsVM() const;

    // The configured gateway answers from the next restart() on: its health check with success,
    // other paths as answerChat() says, or not at all.
    Q_INVOKABLE void startGateway();
    // What the chat's next questions are answered with; nothing: they are left waiting.
    Q_INVOKABLE void answerChat(const QString &body);

    // The voice agent gives this answer to every poll, from now on, and from the next restart() on
    // if there was none.
    Q_INVOKABLE void startVoiceAgent(const QString &status);

    // Saves these gateways, and makes the first one the gateway in use, from the next restart() on.
    Q_INVOKABLE void saveGateways(const QStringList &urls) const;
    // Makes the gateway the one in use, as a pairing link does.
    Q_INVOKABLE void followLink(const QString &url) const;
    // A gateway answers its health check with this status on the address that it returns.
    Q_INVOKABLE QString startPeer(int status);

    // The configured gateway takes no token any more.
    Q_INVOKABLE void rejectTokens();

    // The token under a gateway's URL or "_active_"; null when there is none.
    Q_INVOKABLE QString storedToken(const QString &key) const;
    Q_INVOKABLE void storeToken(const QString &token, const QString &key) const;

    // A file below the home, for what a test wants to save there.
    Q_INVOKABLE QString path(const QString &relative) const { return m_home->path(relative); }
    // What a scanner reads from an image.
    Q_INVOKABLE static QString scan(const QString &image);

    // The program's panel, beside an icon or, without a place, as a window. It is let go of soon.
    Q_INVOKABLE QQuickWindow *openPanel(const QRect &place);

    // What assistive technology is told of a field.
    Q_INVOKABLE static QVariantMap accessible(QObject *item);

    // What is on the clipboard.
    Q_INVOKABLE static QString clipboard();

    ostrelle::GatewayViewModel *gatewayVM() const { return m_models->gatewayVM.get(); }
    ostrelle::ServiceManager *serviceManager() const { return m_models->serviceManager.get(); }
    ostrelle::VoiceViewModel *voiceVM() const { return m_models->voiceVM.get(); }
    ostrelle::SetupManager *setupManager() const { return m_models->setupManager.get(); }
    ostrelle::StatusServer *statusServer() const { return m_models->statusServer.get(); }
    ostrelle::PanelModels *models() const { return m_models->panel.get(); }
    ostrelle::GatewaySettings *settings() const { return m_models->settingsModel.get(); }
    ostrelle::TailscalePeersModel *peers() const { return m_models->peers.get(); }

Q_SIGNALS:
    void madeAnew();

private:
    struct Models {
        explicit Models(ostrelle::Settings opened)
            : settings(std::move(opened))
        {
        }

        ostrelle::Models all() const;

        ostrelle::Settings settings;
        std::unique_ptr<ostrelle::GatewayViewModel> gatewayVM;
        std::unique_ptr<ostrelle::ServiceManager> serviceManager;
        std::unique_ptr<ostrelle::VoiceViewModel> voiceVM;
        std::unique_ptr<ostrelle::SetupManager> setupManager;
        std::unique_ptr<ostrelle::StatusServer> statusServer; // which is not started
        std::unique_ptr<ostrelle::GatewayInUse> gatewayInUse;
        std::unique_ptr<ostrelle::PanelModels> panel;
        std::unique_ptr<ostrelle::GatewayProfiles> profiles;
        std::unique_ptr<ostrelle::GatewaySettings> settingsModel;
        std::unique_ptr<ostrelle::TailscalePeersModel> peers;
    };

    void writeConfig() const;

    std::unique_ptr<SetupHome> m_home;
    std::unique_ptr<StandInGateway> m_gateway;
    std::unique_ptr<StandInGateway> m_peer;
    std::unique_ptr<StandInGateway> m_voiceAgent;
    std::unique_ptr<Models> m_models;
    std::unique_ptr<ostrelle::Panel> m_panel;
};
