#include "control/OnceStored.h"

#include "core/WhenDone.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

void answerOnceStored(const ControlContext &context, Question *question, const QJsonObject &data)
{
    whenDone(context.models.settings.preferences->stored(), question,
             [question, data](bool isStored) {
                 if (isStored) {
                     question->answer(data);
                 } else {
                     question->fail(u"it holds until Ostrelle ends: the preferences' file could "
                                    "not be written"_s);
                 }
             });
}

} // namespace ostrelle
