#include "control/ControlCommands.h"
#include "control/StatusReport.h"
#include "core/BackgroundWork.h"
#include "core/WhenDone.h"
#include "gateway/GatewayViewModel.h"
#include "platform/Log.h"
#include "setup/SetupManager.h"

#include <QJsonDocument>
#include <QLocale>
#include <QSysInfo>
#include <QUrl>
#include <QtConcurrentRun>

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

// What a bug report needs from the background: facts, and what must not be in it.
struct Background {
    FileFacts facts;
    QStringList secrets;
};

Background lookAround(const Settings &settings)
{
    Background found{.facts = lookAtFiles(settings, AskTokens::Yes), .secrets = {}};
    const OstrelleConfig config = settings.config->current();
    QStringList keys{config.gateway.url, KeychainHelper::activeKey};
    for (const SavedGateway &saved : config.gateway.saved.value_or(QList<SavedGateway>())) {
        keys.append(saved.url);
        found.secrets.append(saved.token.value_or(QString()));
    }
    for (const QString &key : keys) {
        found.secrets.append(settings.tokens->getToken(key).value_or(QString()));
        // Older versions took addresses with a user; one with a query may hold a token there.
        found.secrets.append({QUrl(key).userInfo(QUrl::FullyEncoded), QUrl(key).userInfo(),
                              QUrl(key).query(QUrl::FullyEncoded),
                              QUrl(key).fragment(QUrl::FullyEncoded)});
    }
    found.secrets.append({config.gateway.token.value_or(QString()),
                          config.resolveToken(*settings.tokens),
                          settings.preferences->value(preference::geminiAPIKey())});
    found.secrets.removeDuplicates();
    return found;
}

// Nothing of what follows should hold a secret or the home's path; should one of its writers have
// erred, they go here.
QString scrubbed(QString text, const QStringList &secrets)
{
    for (const QString &secret : secrets) {
        if (!secret.isEmpty()) {
            text.replace(secret, "[removed]"_L1);
        }
    }
    return homely(text);
}

QString configuration(OstrelleConfig config)
{
    config.gateway.token.reset();
    if (config.gateway.saved) {
        for (SavedGateway &saved : *config.gateway.saved) {
            saved.token.reset();
        }
    }
    return QString::fromUtf8(config.encode()).trimmed();
}

QString section(const QString &title, const QStringList &lines)
{
    return u"== "_s + title + u'\n' + lines.join(u'\n') + u"\n\n"_s;
}

QStringList versions(const ControlContext &context)
{
    return {u"Ostrelle "_s + context.version + (context.isRunning ? u""_s : u", not running"_s),
            u"Qt "_s + QString::fromLatin1(qVersion()),
            QSysInfo::prettyProductName() + u", "_s + QSysInfo::kernelType() + u' ' +
                QSysInfo::kernelVersion() + u", "_s + QSysInfo::currentCpuArchitecture(),
            u"Locale "_s + QLocale::system().name()};
}

QStringList desktop()
{
    QStringList lines;
    for (const char *name : {"XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE", "DISPLAY",
                             "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        lines.append(QString::fromLatin1(name) + u'=' + qEnvironmentVariable(name));
    }
    return lines;
}

QStringList describe(const SetupChecks &checks)
{
    QStringList lines;
    for (const SetupCheck &check : checks.all()) {
        lines.append((check.ok ? u"there    "_s : u"missing  "_s) + check.label +
                     (check.note.isEmpty() ? QString() : u", "_s + check.note));
    }
    return lines;
}

QString compose(const ControlContext &context, const SetupChecks &checks, const Background &found)
{
    const QJsonObject status = reportStatus(context, found.facts);
    QStringList log;
    for (const QByteArray &line : recentLogLines()) {
        log.append(QString::fromUtf8(line));
    }
    return scrubbed(section(u"Versions"_s, versions(context)) + section(u"Desktop"_s, desktop()) +
                        section(u"Configuration"_s,
                                {configuration(context.models.settings.config->current())}) +
                        section(u"Setup"_s, describe(checks)) +
                        section(u"Status"_s, {QString::fromUtf8(QJsonDocument(status).toJson())}) +
                        section(u"Log"_s, log),
                    found.secrets);
}

} // namespace

void diagnose(const ControlContext &context, Question *question)
{
    SetupManager *setup = context.models.setupManager;
    if (setup == nullptr) {
        setup = new SetupManager(context.models.settings, {}, question);
    }
    const auto look = [settings = context.models.settings] { return lookAround(settings); };
    const auto tell = [context, setup, question](const Background &found) {
        question->answer({{"text"_L1, compose(context, setup->checks(), found)}});
    };
    const QPointer<Question> asked(question); // the checks may outlast it
    setup->runChecks([asked, look, tell] {
        if (asked) {
            whenDone(QtConcurrent::run(&userInitiatedPool(), look), asked.get(), tell);
        }
    });
}

} // namespace ostrelle::command
