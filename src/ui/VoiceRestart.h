#pragma once

#include "voice/VoiceViewModel.h"

#include <QObject>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

// Stops the voice agent and starts it again, also when the view that asked for it is gone by then.
class VoiceRestart : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE static void perform(ostrelle::VoiceViewModel *viewModel)
    {
        viewModel->stop();
        QTimer::singleShot(std::chrono::milliseconds(500), viewModel, &VoiceViewModel::start);
    }
};

} // namespace ostrelle
