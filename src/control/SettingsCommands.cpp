#include "control/ControlCommands.h"
#include "control/OnceStored.h"
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

// Told what the user is told where it could not be done; an empty text where it could.
using Done = std::function<void(const QString &problem)>;

// One of the settings' switches.
struct Switch {
    QLatin1StringView name;
    bool (*isOn)(const Models &models);
    // Calls `done` once it holds, or a failure was taken back.
    void (*set)(const Models &models, bool on, const Done &done);
    bool isPreference = true; // its file has it
};

constexpr bool inNoPreference = false;

constexpr std::array switches{
    Switch{"launch-at-login"_L1,
           [](const Models &models) { return models.gatewaySettings->launchAtLogin(); },
           [](const Models &models, bool on, const Done &done) {
               models.gatewaySettings->setLaunchAtLogin(on, [on, done](bool holds) {
                   done(holds == on ? QString()
                                    : u"the autostart entry could not be changed; Ostrelle's log "
                                      "tells why"_s);
               });
           },
           inNoPreference},
    Switch{"magic-dns"_L1, [](const Models &models) { return models.gatewayVM->useMagicDNS(); },
           [](const Models &models, bool on, const Done &done) {
               models.gatewayVM->setUseMagicDNS(on);
               done({});
           }},
    Switch{"project-tracking"_L1,
           [](const Models &models) { return models.gatewaySettings->projectTrackingEnabled(); },
           [](const Models &models, bool on, const Done &done) {
               models.gatewaySettings->setProjectTrackingEnabled(on, done);
           }},
    Switch{"voice-agent"_L1,
           [](const Models &models) { return models.serviceManager->voiceEnabled(); },
           [](const Models &models, bool on, const Done &done) {
               switchVoice(*models.serviceManager, *models.gatewaySettings, on);
               done({});
           }},
    Switch{"voice-autostart"_L1,
           [](const Models &models) { return models.gatewaySettings->autoStartVoice(); },
           [](const Models &models, bool on, const Done &done) {
               // Of an agent that is switched off the settings do not offer it.
               const bool isPossible = !on || models.serviceManager->voiceEnabled();
               models.gatewaySettings->setAutoStartVoice(on && isPossible);
               done(isPossible ? QString() : u"the voice agent is switched off"_s);
           }},
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
    wanted->set(context.models, on, [asked, context, wanted](const QString &problem) {
        if (!asked) {
            return;
        }
        if (!problem.isEmpty()) {
            asked->fail(problem);
        } else if (wanted->isPreference) {
            answerOnceStored(context, asked, toJson(context.models));
        } else {
            asked->answer(toJson(context.models));
        }
    });
}

} // namespace

void tellSettings(const ControlContext &context, Question *question)
{
    const auto tell = [question, models = context.models] { question->answer(toJson(models)); };
    const PassLimit::Pass pass = context.looks->begin();
    if (!pass) {
        tell();
        return;
    }
    const QPointer<Question> asked(question); // the look may outlast it
    context.models.gatewaySettings->lookAtLoginItem([asked, tell, pass](bool /*holds*/) {
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
    answerOnceStored(context, question, {});
}

void removeGeminiKey(const ControlContext &context, Question *question)
{
    context.models.gatewaySettings->setGeminiAPIKey({});
    answerOnceStored(context, question, {});
}

} // namespace ostrelle::command
