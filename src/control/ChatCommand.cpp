#include "control/ControlCommands.h"
#include "gateway/QuickChatVM.h"

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

void chat(const ControlContext &context, Question *question)
{
    auto *const chat =
        new QuickChatVM(context.models.settings.tokens, std::chrono::seconds(120), question);
    const auto tell = [chat, question] {
        if (chat->isLoading()) {
            return;
        }
        const QString reply = chat->messages()->messages().last().text;
        if (chat->hasFailed()) {
            question->fail(reply);
        } else {
            question->answer({{"reply"_L1, reply}});
        }
    };
    QObject::connect(chat, &QuickChatVM::isLoadingChanged, question, tell);
    chat->setInput(question->text("text"_L1));
    chat->send(context.models.settings.config->current().gateway.url);
    if (chat->messages()->count() == 0) {
        question->fail(u"there is nothing to ask"_s);
    }
}

} // namespace ostrelle::command
