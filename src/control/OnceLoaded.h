#pragma once

#include "control/ControlServer.h"
#include "control/Question.h"

#include <QCoreApplication>
#include <QPointer>

namespace ostrelle
{

// Makes a dashboard's model, which loads from then on, and calls `use(model, pass)` once it has
// loaded. Where the asker goes the load goes on, and counts until it has ended, or while a copy of
// the pass exists. Main thread only.
template<typename Model, typename Use>
void onceLoaded(const ControlContext &context, Question *question, const Use &use)
{
    const PassLimit::Pass pass = context.looks->begin();
    if (!pass) {
        question->fail(QStringLiteral("too many wait for a disk or a gateway already"));
        return;
    }
    auto *const model = new Model(context.models.settings);
    model->setParent(QCoreApplication::instance());
    const QPointer<Question> asked(question);
    QObject::connect(model, &Model::isLoadingChanged, model, [model, asked, use, pass] {
        if (model->isLoading()) {
            return;
        }
        if (asked) {
            use(*model, pass);
        }
        model->deleteLater();
    });
}

} // namespace ostrelle
