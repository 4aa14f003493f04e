#include "control/ControlCommands.h"
#include "control/GatewayMeant.h"
#include "core/BackgroundWork.h"
#include "core/WhenDone.h"
#include "gateway/GatewayInUse.h"
#include "gateway/SavedGateways.h"
#include "gateway/StoredTokens.h"
#include "state/StatusWords.h"

#include <algorithm>

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

// A keyring that hangs keeps nobody from seeing the gateways.
constexpr std::chrono::milliseconds patienceForTokens{1000};

// The gateway in use is sent others than its own too.
bool hasToken(const SavedGatewayRow &row, const StoredTokens &tokens)
{
    return !tokens.tails.value(row.url).isEmpty() || (row.isActive && tokens.activeGatewayHasToken);
}

QJsonObject listOf(const QList<SavedGatewayRow> &rows, const std::optional<StoredTokens> &tokens)
{
    QJsonArray gateways;
    for (const SavedGatewayRow &row : rows) {
        QJsonObject gateway{{"name"_L1, row.displayName},
                            {"url"_L1, withoutPassword(row.url)},
                            {"address"_L1, row.displayURL},
                            {"inUse"_L1, row.isActive}};
        if (tokens) {
            gateway.insert("hasToken"_L1, hasToken(row, *tokens));
        }
        gateways.append(gateway);
    }
    return {{"gateways"_L1, gateways}};
}

void changeSaved(const ControlContext &context, Question *question, const QString &url,
                 const std::function<void(OstrelleConfig::Gateway &)> &apply)
{
    const auto change = [apply](OstrelleConfig &config) { apply(config.gateway); };
    whenDone(context.models.settings.config->change(change), question,
             [question, url](const ConfigStore::Changed &changed) {
                 if (changed.written) {
                     question->answer({{"url"_L1, withoutPassword(url)}});
                 } else {
                     question->fail(u"config.json was not saved: "_s +
                                    changed.written.error().text);
                 }
             });
}

void saveProfile(const ControlContext &context, Question *question, SavedGateway profile)
{
    const auto isSame = [&](const SavedGatewayRow &row) { return row.url == profile.url; };
    if (std::ranges::any_of(savedGateways(context), isSame)) {
        question->fail(u"Not added: a gateway with this address is saved already"_s);
        return;
    }
    if (const QString name = question->text("name"_L1); !name.isEmpty()) {
        profile.name = name;
    }
    changeSaved(context, question, profile.url,
                [profile](OstrelleConfig::Gateway &gateway) { addSaved(gateway, profile); });
}

// Why there are no devices; empty where that is no wonder.
QString whyNone(const ControlContext &context)
{
    const GatewayViewModel &monitor = *context.models.gatewayVM;
    return StatusWords::remoteProblem(monitor.tailscaleInstalled(), monitor.magicDNSURL());
}

QJsonObject toJson(const TailscalePeer &peer)
{
    const SavedGateway profile = profileOf(peer);
    return {{"name"_L1, profile.name},
            {"url"_L1, profile.url},
            {"ip"_L1, peer.ip},
            {"answers"_L1, peer.gatewayOnline == true}};
}

} // namespace

void tellGateways(const ControlContext &context, Question *question)
{
    const auto tell = [context, question](const std::optional<StoredTokens> &tokens) {
        question->answer(listOf(savedGateways(context), tokens));
    };
    const PassLimit::Pass pass = context.looks->begin();
    if (!pass) {
        tell(std::nullopt);
        return;
    }
    const auto look = [pass, config = context.models.settings.config->current(),
                       tokens = context.models.settings.tokens] {
        return readStoredTokens(config, *tokens);
    };
    whenDone(userInitiatedPool().run(look), question, tell);
    QTimer::singleShot(patienceForTokens, question, [tell] { tell(std::nullopt); });
}

void useGateway(const ControlContext &context, Question *question)
{
    const auto url = gatewayMeant(context, question->text("gateway"_L1));
    if (!url) {
        question->fail(url.error());
        return;
    }
    const QPointer<Question> asked(question); // the switch goes on without it
    context.models.gatewayInUse->switchTo(*url, [asked, url = *url] {
        if (asked) {
            asked->answer({{"url"_L1, withoutPassword(url)}});
        }
    });
}

void findDevices(const ControlContext &context, Question *question)
{
    const auto tell = [context, question](const QList<TailscalePeer> &peers) {
        QJsonArray found;
        for (const TailscalePeer &peer : peers) {
            found.append(toJson(peer));
        }
        QJsonObject data{{"devices"_L1, found}};
        if (const QString problem = whyNone(context); found.isEmpty() && !problem.isEmpty()) {
            data.insert("problem"_L1, problem);
        }
        question->answer(data);
    };
    context.devices->look(context.models, context.tailscale, question, tell);
}

void addGateway(const ControlContext &context, Question *question)
{
    const auto profile = gatewayTyped(question->text("url"_L1));
    if (profile) {
        saveProfile(context, question, *profile);
    } else {
        question->fail(gatewayNotAdded(profile.error()));
    }
}

void addDevice(const ControlContext &context, Question *question)
{
    const QString called = question->text("device"_L1);
    const auto add = [context, question, called](const QList<TailscalePeer> &peers) {
        const auto peer = std::ranges::find_if(peers, [&](const TailscalePeer &each) {
            return each.hostname == called || each.ip == called || profileOf(each).name == called;
        });
        if (peer != peers.end()) {
            saveProfile(context, question, profileOf(*peer));
        } else if (const QString problem = whyNone(context);
                   peers.isEmpty() && !problem.isEmpty()) {
            question->fail(problem);
        } else {
            question->fail(u"no device of that name is online and not saved yet"_s);
        }
    };
    context.devices->look(context.models, context.tailscale, question, add);
}

void removeGateway(const ControlContext &context, Question *question)
{
    const auto url = gatewayMeant(context, question->text("gateway"_L1));
    if (!url) {
        question->fail(url.error());
        return;
    }
    changeSaved(context, question, *url,
                [url = *url](OstrelleConfig::Gateway &it) { removeSaved(it, url); });
}

// A switch of the gateway's own, which takes its tool a while.
void encryptGateway(const ControlContext &context, Question *question)
{
    GatewayViewModel *const monitor = context.models.gatewayVM;
    const auto tell = [monitor, question] {
        if (monitor->isEnablingTailscale()) {
            return;
        }
        if (const QString problem = monitor->enableTailscaleError(); !problem.isEmpty()) {
            question->fail(problem);
        } else {
            question->answer({});
        }
    };
    QObject::connect(monitor, &GatewayViewModel::isEnablingTailscaleChanged, question, tell);
    monitor->enableTailscaleServe();
}

} // namespace ostrelle::command
