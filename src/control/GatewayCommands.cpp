#include "control/ControlCommands.h"
#include "core/BackgroundWork.h"
#include "core/WhenDone.h"
#include "gateway/GatewayInUse.h"
#include "gateway/SavedGateways.h"
#include "gateway/SavedGatewaysModel.h"
#include "gateway/StoredTokens.h"

#include <QtConcurrentRun>

#include <algorithm>

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

// A keyring that hangs keeps nobody from seeing the gateways.
constexpr std::chrono::milliseconds patienceForTokens{1000};

QList<SavedGatewayRow> savedGateways(const ControlContext &context)
{
    return savedGatewayRows(context.models.settings.config->current().gateway,
                            context.models.gatewayVM->magicDNSURL(), {});
}

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
                            {"url"_L1, row.url},
                            {"address"_L1, row.displayURL},
                            {"inUse"_L1, row.isActive}};
        if (tokens) {
            gateway.insert("hasToken"_L1, hasToken(row, *tokens));
        }
        gateways.append(gateway);
    }
    return {{"gateways"_L1, gateways}};
}

// The saved gateway that the user means, by its URL or its name; or what he is told.
std::expected<SavedGatewayRow, QString> gatewayMeant(const ControlContext &context,
                                                     const QString &called)
{
    QList<SavedGatewayRow> named;
    for (const SavedGatewayRow &row : savedGateways(context)) {
        if (row.url == called || row.displayURL == called) {
            return row;
        }
        if (row.displayName.compare(called, Qt::CaseInsensitive) == 0) {
            named.append(row);
        }
    }
    if (named.size() == 1) {
        return named.first();
    }
    return std::unexpected(named.isEmpty() ? u"no gateway with that name or URL is saved"_s
                                           : u"more than one gateway has that name; say the URL"_s);
}

void changeSaved(const ControlContext &context, Question *question, const QString &url,
                 const std::function<void(OstrelleConfig::Gateway &)> &apply)
{
    const auto change = [apply](OstrelleConfig &config) { apply(config.gateway); };
    whenDone(context.models.settings.config->change(change), question,
             [question, url](const ConfigStore::Changed &changed) {
                 if (changed.written) {
                     question->answer({{"url"_L1, url}});
                 } else {
                     question->fail(u"config.json was not saved: "_s +
                                    changed.written.error().text);
                 }
             });
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
    whenDone(QtConcurrent::run(&userInitiatedPool(), look), question, tell);
    QTimer::singleShot(patienceForTokens, question, [tell] { tell(std::nullopt); });
}

void useGateway(const ControlContext &context, Question *question)
{
    const auto gateway = gatewayMeant(context, question->text("gateway"_L1));
    if (!gateway) {
        question->fail(gateway.error());
        return;
    }
    const QPointer<Question> asked(question); // the switch goes on without it
    context.models.gatewayInUse->switchTo(gateway->url, [asked, url = gateway->url] {
        if (asked) {
            asked->answer({{"url"_L1, url}});
        }
    });
}

void addGateway(const ControlContext &context, Question *question)
{
    auto profile = gatewayTyped(question->text("url"_L1));
    if (!profile) {
        question->fail(gatewayNotAdded(profile.error()));
        return;
    }
    const auto isSame = [&](const SavedGatewayRow &row) { return row.url == profile->url; };
    if (std::ranges::any_of(savedGateways(context), isSame)) {
        question->fail(u"Not added: a gateway with this address is saved already"_s);
        return;
    }
    if (const QString name = question->text("name"_L1); !name.isEmpty()) {
        profile->name = name;
    }
    changeSaved(
        context, question, profile->url,
        [profile = *profile](OstrelleConfig::Gateway &gateway) { addSaved(gateway, profile); });
}

void removeGateway(const ControlContext &context, Question *question)
{
    const auto gateway = gatewayMeant(context, question->text("gateway"_L1));
    if (!gateway) {
        question->fail(gateway.error());
        return;
    }
    changeSaved(context, question, gateway->url,
                [url = gateway->url](OstrelleConfig::Gateway &it) { removeSaved(it, url); });
}

void setToken(const ControlContext &context, Question *question)
{
    const QString token = question->text("token"_L1);
    const QString called = question->text("gateway"_L1);
    QString url = context.models.settings.config->current().gateway.url;
    if (!called.isEmpty()) {
        const auto gateway = gatewayMeant(context, called);
        if (!gateway) {
            question->fail(gateway.error());
            return;
        }
        url = gateway->url;
    }
    if (token.isEmpty()) {
        question->fail(u"there is no token"_s);
        return;
    }
    whenDone(context.models.settings.tokens->saveForUser(url, token), question,
             [question, url, monitor = context.models.gatewayVM](const Tokens::Saved &saved) {
                 if (!saved) {
                     question->fail(tokenNotSaved(saved.error()));
                     return;
                 }
                 monitor->pollHealth();
                 question->answer({{"url"_L1, url}});
             });
}

} // namespace ostrelle::command
