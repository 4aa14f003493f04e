#include "control/ControlCommands.h"
#include "control/StatusReport.h"
#include "control/Unnamed.h"
#include "core/BackgroundWork.h"
#include "core/WhenDone.h"
#include "gateway/GatewayViewModel.h"
#include "platform/Log.h"
#include "setup/SetupManager.h"

#include <QJsonDocument>
#include <QLocale>
#include <QSysInfo>
#include <QUrl>

#include <algorithm>

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
    }
    found.secrets.append({config.gateway.token.value_or(QString()),
                          config.resolveToken(*settings.tokens),
                          settings.preferences->value(preference::geminiAPIKey())});
    return found;
}

// Nothing of what follows should hold a secret or the home's path; should one of its writers have
// erred, they go here. A secret that may be part of a word would be told by its absence.
QString scrubbed(QString text, const QStringList &secrets)
{
    constexpr qsizetype shortest = 6;
    for (const QString &secret : secrets) {
        if (secret.size() >= shortest) {
            text.replace(secret, "[removed]"_L1);
        }
    }
    return homely(text);
}

// The user's own names, of people perhaps, stay out as well.
const QString ownName = u"[name]"_s;

// Older versions took URLs with a user; one with a query may hold a token there.
QString bare(const QString &url)
{
    return QUrl(url).toString(QUrl::RemoveUserInfo | QUrl::RemoveQuery | QUrl::RemoveFragment);
}

QString configuration(OstrelleConfig config)
{
    config.gateway.url = bare(config.gateway.url);
    config.gateway.token.reset();
    if (config.gateway.saved) {
        for (SavedGateway &saved : *config.gateway.saved) {
            saved.token.reset();
            saved.name = ownName;
            saved.url = bare(saved.url);
        }
    }
    return QString::fromUtf8(config.encode()).trimmed();
}

QString statusText(QJsonObject status)
{
    QJsonObject gateway = status["gateway"_L1].toObject();
    gateway.insert("name"_L1, ownName);
    for (const QLatin1StringView url : {"url"_L1, "address"_L1}) {
        gateway.insert(url, bare(gateway[url].toString()));
    }
    status.insert("gateway"_L1, gateway);
    return QString::fromUtf8(QJsonDocument(status).toJson());
}

// Of the machines that the report would name.
QStringList addressesIn(const OstrelleConfig &config, const QJsonObject &status)
{
    QStringList addresses{config.gateway.url, status["tailscale"_L1]["url"_L1].toString(),
                          status["tailscale"_L1]["ip"_L1].toString()};
    for (const SavedGateway &saved : config.gateway.saved.value_or(QList<SavedGateway>())) {
        addresses.append(saved.url);
    }
    return addresses;
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
    for (const char *name :
         {"XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        lines.append(QString::fromLatin1(name) + u'=' + qEnvironmentVariable(name));
    }
    // Before the colon, another machine may be named.
    const QString display = qEnvironmentVariable("DISPLAY");
    lines.append(u"DISPLAY="_s + display.mid(std::max<qsizetype>(0, display.indexOf(u':'))));
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
    const OstrelleConfig config = context.models.settings.config->current();
    const QString text = section(u"Versions"_s, versions(context)) +
                         section(u"Desktop"_s, desktop()) +
                         section(u"Configuration"_s, {configuration(config)}) +
                         section(u"Setup"_s, describe(checks)) +
                         section(u"Status"_s, {statusText(status)}) + section(u"Log"_s, log);
    return unnamed(scrubbed(text, found.secrets), addressesIn(config, status));
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
            whenDone(userInitiatedPool().run(look), asked.get(), tell);
        }
    });
}

} // namespace ostrelle::command
