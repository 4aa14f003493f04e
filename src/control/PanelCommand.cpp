#include "control/ControlCommands.h"

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

} // namespace ostrelle::command
