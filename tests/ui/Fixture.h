#pragma once

#include "support/ScratchHome.h"
#include "ui/QmlTypes.h"

#include <QObject>

#include <memory>

// The world around a view under test: a home of its own, and the models that the program makes,
// without the timers' work being awaited. The tests see it as `fixture`.
class Fixture : public QObject
{
    Q_OBJECT
    Q_PROPERTY(ostrelle::GatewayViewModel *gatewayVM READ gatewayVM NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::ServiceManager *serviceManager READ serviceManager NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::VoiceViewModel *voiceVM READ voiceVM NOTIFY madeAnew)
    Q_PROPERTY(ostrelle::SetupManager *setupManager READ setupManager NOTIFY madeAnew)

public:
    Fixture();
    ~Fixture() override;

    // Makes the models anew, as a start of the program with the files that are there now does.
    Q_INVOKABLE void restart();

    // Writes a file below the home.
    Q_INVOKABLE void write(const QString &relative, const QString &content) const;
    Q_INVOKABLE QString read(const QString &relative) const;

    // What is on the clipboard.
    Q_INVOKABLE static QString clipboard();

    ostrelle::GatewayViewModel *gatewayVM() const { return m_models->gatewayVM.get(); }
    ostrelle::ServiceManager *serviceManager() const { return m_models->serviceManager.get(); }
    ostrelle::VoiceViewModel *voiceVM() const { return m_models->voiceVM.get(); }
    ostrelle::SetupManager *setupManager() const { return m_models->setupManager.get(); }

Q_SIGNALS:
    void madeAnew();

private:
    struct Models {
        std::unique_ptr<ostrelle::GatewayViewModel> gatewayVM;
        std::unique_ptr<ostrelle::ServiceManager> serviceManager;
        std::unique_ptr<ostrelle::VoiceViewModel> voiceVM;
        std::unique_ptr<ostrelle::SetupManager> setupManager;
    };

    ScratchHome m_home;
    std::unique_ptr<Models> m_models;
};
