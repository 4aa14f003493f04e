#include "control/ControlCommands.h"
#include "gateway/GatewaySettings.h"
#include "gateway/GatewayViewModel.h"
#include "state/VoiceSwitch.h"
#include "voice/ServiceManager.h"

#include <QTimer>

#include <algorithm>
#include <array>

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

// A disk that hangs keeps nobody from seeing the settings.
constexpr std::chrono::milliseconds patienceForLoginItem{1000};

using Done = std::function<void()>;

// One of the settings' switches.
struct Switch {
    QLatin1StringView name;
    bool (*isOn)(const Models &models);
    // Calls `done` once it holds, or a failure was taken back.
    void (*set)(const Models &models, bool on, const Done &done);
    QLatin1StringView problem = {}; // what the user is told then
};

constexpr std::array switches{
    Switch{"launch-at-login"_L1,
           [](const Models &models) { return models.gatewaySettings->launchAtLogin(); },
           [](const Models &models, bool on, const Done &done) {
               models.gatewaySettings->setLaunchAtLogin(on, done);
           },
           "the autostart entry could not be changed; Ostrelle's log tells why"_L1},
    Switch{"magic-dns"_L1, [](const Models &models) { return models.gatewayVM->useMagicDNS(); },
           [](const Models &models, bool on, const Done &done) {
               models.gatewayVM->setUseMagicDNS(on);
               done();
           }},
    Switch{"project-tracking"_L1,
           [](const Models &models) { return models.gatewaySettings->projectTrackingEnabled(); },
           [](const Models &models, bool on, const Done &done) {
               models.gatewaySettings->setProjectTrackingEnabled(on);
               done();
           }},
    Switch{"voice-agent"_L1,
           [](const Models &models) { return models.serviceManager->voiceEnabled(); },
           [](const Models &models, bool on, const Done &done) {
               switchVoice(*models.serviceManager, *models.gatewaySettings, on);
               done();
           }},
    Switch{"voice-autostart"_L1,
           [](const Models &models) { return models.gatewaySettings->autoStartVoice(); },
           [](const Models &models, bool on, const Done &done) {
               // Of an agent that is switched off the settings do not offer it.
               models.gatewaySettings->setAutoStartVoice(on &&
                                                         models.serviceManager->voiceEnabled());
               done();
           },
           "the voice agent is switched off"_L1},
};

QJsonObject toJson(const Models &models)
{
    QJsonArray rows;
    for (const Switch &each : switches) {
        rows.append(QJsonObject{{"name"_L1, each.name}, {"on"_L1, each.isOn(models)}});
    }
    return {{"settings"_L1, rows},
            {"hasGeminiKey"_L1, !models.gatewaySettings->geminiAPIKey().isEmpty()}};
}

void change(const ControlContext &context, Question *question, bool on)
{
    const QString name = question->text("name"_L1);
    const auto *const wanted = std::ranges::find(switches, name, &Switch::name);
    if (wanted == switches.end()) {
        question->fail(u"there is no setting of that name"_s);
        return;
    }
    const QPointer<Question> asked(question); // the change goes on without it
    wanted->set(context.models, on, [asked, models = context.models, wanted, on] {
        if (!asked) {
            return;
        }
        if (wanted->isOn(models) == on) {
            asked->answer(toJson(models));
        } else {
            asked->fail(wanted->problem);
        }
    });
}

} // namespace

void tellSettings(const ControlContext &context, Question *question)
{
    const auto tell = [question, models = context.models] { question->answer(toJson(models)); };
    const QPointer<Question> asked(question); // the look may outlast it
    context.models.gatewaySettings->lookAtLoginItem([asked, tell] {
        if (asked) {
            tell();
        }
    });
    QTimer::singleShot(patienceForLoginItem, question, tell);
}

void switchSettingOn(const ControlContext &context, Question *question)
{
    change(context, question, true);
}

void switchSettingOff(const ControlContext &context, Question *question)
{
    change(context, question, false);
}

void setGeminiKey(const ControlContext &context, Question *question)
{
    const QString key = question->text("key"_L1);
    if (key.isEmpty()) {
        question->fail(u"there is no key"_s);
        return;
    }
    context.models.gatewaySettings->setGeminiAPIKey(key);
    question->answer({});
}

void removeGeminiKey(const ControlContext &context, Question *question)
{
    context.models.gatewaySettings->setGeminiAPIKey({});
    question->answer({});
}

} // namespace ostrelle::command
