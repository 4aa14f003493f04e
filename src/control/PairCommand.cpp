#include "control/ControlCommands.h"
#include "core/BackgroundWork.h"
#include "core/WhenDone.h"
#include "gateway/GatewayViewModel.h"
#include "gateway/PairingLink.h"
#include "gateway/QrCode.h"

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

PairingSubject subjectOf(const ControlContext &context)
{
    const Settings &settings = context.models.settings;
    const OstrelleConfig config = settings.config->current();
    const GatewayNames names(config.gateway, context.models.gatewayVM->magicDNSURL());
    return {.gateway = names.activeGatewaySaved(),
            .config = config,
            .tokens = settings.tokens,
            .useMagicDNS = context.models.gatewayVM->useMagicDNS(),
            .geminiAPIKey = settings.preferences->value(preference::geminiAPIKey()),
            .tailscale = context.tailscale};
}

// A terminal damages nothing, and has few lines.
std::optional<QrCode> codeForTerminal(const QString &link)
{
    return QrCode::encode(link.toUtf8(), QrCode::Correction::Low);
}

// A text of "#" and blanks for each row of modules, without the light border.
QJsonArray rowsOf(const QrCode &code)
{
    QJsonArray rows;
    for (int row = 0; row < code.size(); ++row) {
        QString text;
        for (int column = 0; column < code.size(); ++column) {
            text += code.isDark(column, row) ? u'#' : u' ';
        }
        rows.append(text);
    }
    return rows;
}

} // namespace

void pair(const ControlContext &context, Question *question)
{
    const bool asLink = question->text("form"_L1) == "link"_L1;
    const PassLimit::Pass pass = context.looks->begin();
    if (!pass) {
        question->fail(u"the keyring does not answer"_s);
        return;
    }
    const auto build = [pass, subject = subjectOf(context)] { return buildPairURL(subject); };
    whenDone(userInitiatedPool().run(build), question, [question, asLink](const QString &link) {
        if (asLink) {
            question->answer({{"link"_L1, link}});
        } else if (const auto code = codeForTerminal(link)) {
            question->answer({{"rows"_L1, rowsOf(*code)}});
        } else {
            question->fail(u"the link is too long for a code"_s);
        }
    });
}

} // namespace ostrelle::command
