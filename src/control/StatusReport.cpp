#include "control/StatusReport.h"

#include "gateway/GatewayAddress.h"
#include "gateway/GatewayNames.h"
#include "gateway/GatewayViewModel.h"
#include "state/StateInWords.h"
#include "state/StatusWords.h"
#include "statusserver/StatusServer.h"
#include "voice/VoiceViewModel.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QJsonObject toJson(const Light &light)
{
    return {{"word"_L1, light.word}, {"color"_L1, light.color}};
}

Light voiceLight(const Models &models)
{
    return StatusWords::voice(models.serviceManager->voiceEnabled(),
                              models.voiceVM->voiceRunning());
}

Light serverLight(const Models &models)
{
    return StatusWords::statusServer(models.statusServer->running(),
                                     models.statusServer->portTaken());
}

QString tokenWord(const ControlContext &context, const FileFacts &facts)
{
    if (context.isRunning && context.models.gatewayVM->tokenRejected()) {
        return u"rejected"_s;
    }
    if (!facts.hasToken) {
        return u"unknown"_s;
    }
    return *facts.hasToken ? u"stored"_s : u"none"_s;
}

QJsonObject gatewayOf(const ControlContext &context, const FileFacts &facts)
{
    const GatewayViewModel *const monitor = context.models.gatewayVM;
    const GatewayNames names(context.models.settings.config->current().gateway,
                             monitor != nullptr ? monitor->magicDNSURL() : QString());
    QJsonObject gateway{
        {"name"_L1, names.activeGatewayName()},
        {"url"_L1, withoutPassword(context.models.settings.config->current().gateway.url)},
        {"address"_L1, names.activeGatewayURL()},
        {"token"_L1, tokenWord(context, facts)}};
    if (monitor != nullptr) {
        gateway.insert("light"_L1, toJson(StatusWords::gateway(monitor->gatewayOnline())));
        gateway.insert("lock"_L1, toJson(StatusWords::lock(monitor->isSecure())));
    }
    return gateway;
}

QJsonObject tailscaleOf(const GatewayViewModel &monitor)
{
    return {{"installed"_L1, monitor.tailscaleInstalled()},
            {"ip"_L1, monitor.tailscaleIP()},
            {"url"_L1, monitor.magicDNSURL()},
            {"problem"_L1,
             StatusWords::remoteProblem(monitor.tailscaleInstalled(), monitor.magicDNSURL())}};
}

QJsonObject voiceOf(const Models &models)
{
    return {{"light"_L1, toJson(voiceLight(models))},
            {"label"_L1, models.voiceVM->stateLabel()},
            {"state"_L1, models.voiceVM->state()},
            {"muted"_L1, models.voiceVM->isMuted()},
            {"tier"_L1, models.voiceVM->tier()}};
}

QJsonObject serverOf(const Models &models)
{
    return {{"light"_L1, toJson(serverLight(models))}, {"port"_L1, models.statusServer->port()}};
}

// Of the agent: it was to run, and does not. One that the user has stopped, or does not start with
// the program, is none.
bool isVoiceMissing(const Models &models)
{
    return models.serviceManager->voiceEnabled() && !models.serviceManager->userStoppedVoice() &&
           !models.voiceVM->voiceRunning() &&
           models.settings.preferences->value(preference::autoStartVoice);
}

// What a script is to be told. Tailscale is not among it: whoever uses it sees the lock.
QJsonArray problemsOf(const ControlContext &context, const FileFacts &facts)
{
    const Models &models = context.models;
    const QString token = tokenWord(context, facts);
    QJsonArray problems;
    if (!models.gatewayVM->gatewayOnline()) {
        problems.append(u"Gateway "_s + StatusWords::gateway(false).word);
    }
    if (token == "rejected"_L1) {
        problems.append(u"Gateway rejects the token"_s);
    } else if (token == "none"_L1) {
        problems.append(u"No token for the gateway"_s);
    }
    if (isVoiceMissing(models)) {
        problems.append(u"Voice agent "_s + voiceLight(models).word);
    }
    if (!models.statusServer->running()) {
        problems.append(u"Status server "_s + serverLight(models).word);
    }
    return problems;
}

} // namespace

QJsonObject reportStatus(const ControlContext &context, const FileFacts &facts)
{
    QJsonObject status{{"gateway"_L1, gatewayOf(context, facts)},
                       {"documents"_L1, facts.documents},
                       {"secrets"_L1, facts.secrets}};
    if (context.isRunning) {
        const Models &models = context.models;
        status.insert("summary"_L1,
                      stateInWords(*models.gatewayVM, *models.voiceVM, *models.statusServer));
        status.insert("problems"_L1, problemsOf(context, facts));
        status.insert("tailscale"_L1, tailscaleOf(*models.gatewayVM));
        status.insert("voice"_L1, voiceOf(models));
        status.insert("statusServer"_L1, serverOf(models));
    }
    return status;
}

} // namespace ostrelle
