#include "control/ControlCommands.h"
#include "control/StatusReport.h"
#include "core/BackgroundWork.h"
#include "core/WhenDone.h"

#include <QTimer>

namespace ostrelle::command
{

namespace
{

// A disk or a keyring that hangs leaves its facts out of the answer.
constexpr std::chrono::milliseconds patienceForFacts{1000};

} // namespace

void tellStatus(const ControlContext &context, Question *question)
{
    const auto tell = [context, question](const FileFacts &facts) {
        question->answer(reportStatus(context, facts));
    };
    const PassLimit::Pass pass = context.looks->begin();
    if (!pass) {
        tell({});
        return;
    }
    // Without the program the keyring is left in peace.
    const auto look = [pass, settings = context.models.settings,
                       askTokens = context.isRunning ? AskTokens::Yes : AskTokens::No] {
        return lookAtFiles(settings, askTokens);
    };
    whenDone(userInitiatedPool().run(look), question, tell);
    QTimer::singleShot(patienceForFacts, question, [tell] { tell({}); });
}

} // namespace ostrelle::command
