#include "control/ControlCommands.h"
#include "control/GatewayMeant.h"
#include "core/WhenDone.h"
#include "gateway/GatewayAddress.h"
#include "gateway/GatewayNames.h"
#include "gateway/GatewayViewModel.h"

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

// Where none is asked for it is the one in use; an empty name is a mistake.
std::expected<QString, QString> gatewayOf(const ControlContext &context, const Question &question)
{
    return question.has("gateway"_L1) ? gatewayMeant(context, question.text("gateway"_L1))
                                      : context.models.settings.config->current().gateway.url;
}

void store(const ControlContext &context, Question *question, const QString &token)
{
    const auto url = gatewayOf(context, *question);
    if (!url) {
        question->fail(url.error());
        return;
    }
    whenDone(
        context.models.settings.tokens->saveForUser(*url, token), question,
        [question, url = *url, monitor = context.models.gatewayVM](const Tokens::Saved &saved) {
            if (!saved) {
                question->fail(tokenNotSaved(saved.error()));
                return;
            }
            monitor->pollHealth();
            question->answer({{"url"_L1, withoutPassword(url)}});
        });
}

} // namespace

void setToken(const ControlContext &context, Question *question)
{
    const QString token = question->text("token"_L1);
    if (token.isEmpty()) {
        question->fail(u"there is no token"_s);
        return;
    }
    store(context, question, token);
}

// As the settings do for a field that the user has emptied.
void removeToken(const ControlContext &context, Question *question)
{
    store(context, question, {});
}

void resetToken(const ControlContext &context, Question *question)
{
    GatewayViewModel *const monitor = context.models.gatewayVM;
    OstrelleConfig::Gateway gateway = context.models.settings.config->current().gateway;
    if (!GatewayNames(gateway, monitor->magicDNSURL()).isLocalGateway()) {
        question->fail(u"the gateway in use is not this machine's: ask its owner for a token"_s);
        return;
    }
    monitor->resetGatewayToken();
    gateway.url = monitor->tokenResetGateway(); // of one that was under way already, perhaps
    const QString url = GatewayNames(gateway, monitor->magicDNSURL()).activeGatewayURL();
    const auto tell = [monitor, question, url] {
        if (monitor->isResettingToken()) {
            return;
        }
        if (const QString problem = monitor->tokenResetProblem(); !problem.isEmpty()) {
            question->fail(problem);
        } else {
            question->answer({{"url"_L1, url}});
        }
    };
    QObject::connect(monitor, &GatewayViewModel::isResettingTokenChanged, question, tell);
}

} // namespace ostrelle::command
