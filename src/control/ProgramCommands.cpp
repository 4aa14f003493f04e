#include "control/ControlCommands.h"
#include "state/Quit.h"

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

void openPanel(const ControlContext &context, Question *question)
{
    if (!context.openPanel) {
        question->fail(u"this Ostrelle runs without a display"_s);
        return;
    }
    context.openPanel();
    question->answer({});
}

// The answer is on its way before the end.
void quit(const ControlContext & /*context*/, Question *question)
{
    question->answer({});
    quitProgram();
}

} // namespace ostrelle::command
