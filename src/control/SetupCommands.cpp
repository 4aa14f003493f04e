#include "control/ControlCommands.h"
#include "setup/SetupManager.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

// Where the sheet has buttons below its rows, and steps of their own, here there are commands.
QString withCommands(QString advice)
{
    for (const auto &[button, command] : {
             std::pair(installEverythingBelow, u"ostrellectl setup install"_s),
             std::pair(installVoiceBelow, u"ostrellectl setup voice"_s),
             std::pair(reCheckBelow, u"ostrellectl setup"_s),
         }) {
        advice.replace(button, command);
    }
    return advice;
}

SetupChecks forTerminal(SetupChecks checks)
{
    checks.serve.advice = u"here: ostrellectl setup serve, once MagicDNS and HTTPS certificates "
                          "are on at https://login.tailscale.com/admin/dns"_s;
    if (checks.agent.ok) {
        checks.token.commands = {
            u"duskrell config get gateway.auth.token | ostrellectl token set"_s};
    }
    return checks;
}

QJsonObject toJson(const SetupCheck &check)
{
    QStringList commands = check.commands;
    commands.removeAll(QString());
    QJsonObject row{{"label"_L1, check.label}, {"ok"_L1, check.ok}, {"note"_L1, check.note}};
    if (!check.ok) {
        row.insert("advice"_L1, withCommands(check.advice));
        row.insert("commands"_L1, QJsonArray::fromStringList(commands));
    }
    return row;
}

QJsonObject toJson(const SetupChecks &checks)
{
    QJsonArray rows;
    for (const SetupCheck &check : forTerminal(checks).all()) {
        rows.append(toJson(check));
    }
    return {{"checks"_L1, rows}};
}

// What an installer prints may be long; the rest of it comes with the next answer.
constexpr qsizetype enoughAtOnce = qsizetype{256} * 1024; // characters
constexpr qsizetype costOfAMessage = 32;                  // besides its own

// An asker who hears nothing for longer asks whether anybody is there.
constexpr std::chrono::seconds patienceForProgress{30};

struct Progress {
    QStringList messages;
    qint64 next; // the number of the first message that is not among them
    bool isAll;
};

Progress progressFrom(qint64 number, const StatusLog &log)
{
    const qint64 wanted = std::max<qint64>(number - log.cleared(), 0);
    auto row = static_cast<int>(std::min<qint64>(wanted, log.rowCount()));
    QStringList messages;
    for (qsizetype length = 0; row < log.rowCount() && length < enoughAtOnce; ++row) {
        messages.append(log.messageAt(row));
        length += messages.last().size() + costOfAMessage;
    }
    return {.messages = messages, .next = log.cleared() + row, .isAll = row == log.rowCount()};
}

QJsonObject toJson(const Progress &progress, const SetupManager &setup)
{
    const bool isOver = progress.isAll && !setup.isWorking();
    QJsonObject data{{"messages"_L1, QJsonArray::fromStringList(progress.messages)},
                     {"next"_L1, progress.next},
                     {"working"_L1, !isOver}};
    if (isOver) {
        data.insert("checks"_L1, toJson(setup.checks())["checks"_L1]);
        data.insert("problem"_L1, setup.problem());
    }
    return data;
}

// Answers with the number of the first message that this will print; where it is under way already,
// of the first that there is. Nothing begins beside something else: each may need what the other
// puts in place, and they print to one log.
void start(const ControlContext &context, Question *question,
           bool (SetupManager::*isUnderWay)() const,
           const std::function<void(SetupManager &setup)> &begin)
{
    SetupManager &setup = *context.models.setupManager;
    const StatusLog &log = *setup.statusMessages();
    if ((setup.*isUnderWay)()) {
        question->answer({{"next"_L1, log.cleared()}, {"joined"_L1, true}});
    } else if (setup.isWorking()) {
        question->fail(u"something else is being set up, which \"ostrellectl setup progress\" "
                       "shows; try again when that is done"_s);
    } else {
        begin(setup);
        question->answer({{"next"_L1, log.cleared() + log.rowCount()}});
    }
}

} // namespace

void checkSetup(const ControlContext &context, Question *question)
{
    SetupManager *setup = context.models.setupManager;
    if (setup == nullptr) {
        setup = new SetupManager(context.models.settings, {}, question);
    }
    const QPointer<Question> asked(question); // the checks may outlast it
    setup->runChecks([setup, asked] {
        if (asked) {
            asked->answer(toJson(setup->checks()));
        }
    });
}

void installEverything(const ControlContext &context, Question *question)
{
    const QString password = question->text("password"_L1);
    if (password.trimmed().isEmpty()) {
        question->fail(u"an installation needs your login password"_s);
        return;
    }
    start(context, question, &SetupManager::isInstallingDuskrell,
          [password](SetupManager &setup) { setup.installDuskrell(password); });
}

void installVoice(const ControlContext &context, Question *question)
{
    start(context, question, &SetupManager::isRunning, [](SetupManager &setup) { setup.run(); });
}

void configureServe(const ControlContext &context, Question *question)
{
    start(context, question, &SetupManager::isConfiguringTailscale,
          [](SetupManager &setup) { setup.configureTailscaleServe(); });
}

void tellProgress(const ControlContext &context, Question *question)
{
    SetupManager *const setup = context.models.setupManager;
    const auto tell = [setup, question](bool waits) {
        const Progress progress =
            progressFrom(question->number("from"_L1), *setup->statusMessages());
        if (!waits || !progress.messages.isEmpty() || !setup->isWorking()) {
            question->answer(toJson(progress, *setup));
        }
    };
    const auto look = [tell] { tell(true); };
    QObject::connect(setup->statusMessages(), &StatusLog::rowsInserted, question, look,
                     Qt::QueuedConnection);
    for (const auto changed :
         {&SetupManager::isInstallingDuskrellChanged, &SetupManager::isRunningChanged,
          &SetupManager::isConfiguringTailscaleChanged}) {
        // Later: one operation may begin where another ends.
        QObject::connect(setup, changed, question, look, Qt::QueuedConnection);
    }
    QTimer::singleShot(patienceForProgress, question, [tell] { tell(false); });
    look();
}

} // namespace ostrelle::command
