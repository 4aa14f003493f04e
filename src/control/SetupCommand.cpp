#include "control/ControlCommands.h"
#include "setup/SetupManager.h"

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

QJsonObject toJson(const SetupCheck &check)
{
    QStringList commands = check.commands;
    commands.removeAll(QString());
    QJsonObject row{{"label"_L1, check.label}, {"ok"_L1, check.ok}, {"note"_L1, check.note}};
    if (!check.ok) {
        // The sheet's buttons stand below its rows.
        row.insert("advice"_L1,
                   QString(check.advice)
                       .replace(" below"_L1, " in the setup sheet, which needs a display"_L1));
        row.insert("commands"_L1, QJsonArray::fromStringList(commands));
    }
    return row;
}

QJsonObject toJson(const SetupChecks &checks)
{
    QJsonArray rows;
    for (const SetupCheck &check : checks.all()) {
        rows.append(toJson(check));
    }
    return {{"checks"_L1, rows}};
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

} // namespace ostrelle::command
