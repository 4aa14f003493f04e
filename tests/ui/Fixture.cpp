#include "ui/Fixture.h"

#include "core/BackgroundWork.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

// Ports on which nobody answers: a test that wants an answer says so in its own configuration.
constexpr auto quietConfig = R"({
    "gateway": {"url": "http://127.0.0.1:9", "saved": []},
    "ports": {"status": 0, "voiceAgent": 9},
    "voice": {"enabled": true, "venvPath": "~/.ostrelle/venv"}
})";

} // namespace

Fixture::Fixture()
{
    write(u".ostrelle/config.json"_s, QString::fromLatin1(quietConfig));
    restart();
}

Fixture::~Fixture()
{
    m_models.reset();
    finishBackgroundWork(std::chrono::seconds(30));
}

void Fixture::restart()
{
    const OstrelleConfig config = OstrelleConfig::load();
    auto models = std::make_unique<Models>();
    models->gatewayVM = std::make_unique<GatewayViewModel>();
    models->serviceManager = std::make_unique<ServiceManager>(config);
    models->voiceVM = std::make_unique<VoiceViewModel>(models->serviceManager.get());
    models->setupManager = std::make_unique<SetupManager>(config);
    m_models.swap(models);
    Q_EMIT madeAnew();
}

void Fixture::write(const QString &relative, const QString &content) const
{
    static_cast<void>(m_home.write(relative, content.toUtf8()));
}

QString Fixture::read(const QString &relative) const
{
    return QString::fromUtf8(m_home.read(relative));
}

QString Fixture::clipboard()
{
    return QGuiApplication::clipboard()->text();
}
