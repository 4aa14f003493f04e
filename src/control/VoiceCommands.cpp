#include "control/ControlCommands.h"
#include "voice/VoiceViewModel.h"

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

void tellVoice(const VoiceViewModel &voice, Question *question)
{
    question->answer({{"label"_L1, voice.stateLabel()}});
}

// The wish is shown at once; the agent's next answer decides.
void setMuted(const ControlContext &context, Question *question, bool (*wish)(bool isMuted))
{
    VoiceViewModel &voice = *context.models.voiceVM;
    if (!voice.voiceRunning()) {
        question->fail(u"the voice agent does not run"_s);
        return;
    }
    if (voice.isMuted() != wish(voice.isMuted())) {
        voice.toggleMute();
    }
    tellVoice(voice, question);
}

// As the switch in the settings does, which uncovers the buttons. Nothing is written of what holds.
void switchOn(ServiceManager &services)
{
    if (!services.voiceEnabled()) {
        services.setVoiceEnabled(true);
    }
}

void answerWhenUp(VoiceViewModel *voice, Question *question)
{
    const auto look = [voice, question] {
        if (!voice->startProblem().isEmpty() && voice->isLaunching()) {
            question->fail(voice->startProblem());
        } else if (!voice->isLaunching() && voice->voiceRunning()) {
            tellVoice(*voice, question);
        } else if (!voice->isLaunching()) {
            question->fail(u"the voice agent did not start; what it printed is in "
                           "/tmp/ostrelle-voice.log"_s);
        }
    };
    QObject::connect(voice, &VoiceViewModel::isLaunchingChanged, question, look,
                     Qt::QueuedConnection); // all of what has changed counts
    QObject::connect(voice, &VoiceViewModel::startProblemChanged, question, look,
                     Qt::QueuedConnection);
    QMetaObject::invokeMethod(question, look, Qt::QueuedConnection);
}

} // namespace

void mute(const ControlContext &context, Question *question)
{
    setMuted(context, question, [](bool) { return true; });
}

void unmute(const ControlContext &context, Question *question)
{
    setMuted(context, question, [](bool) { return false; });
}

void toggleMute(const ControlContext &context, Question *question)
{
    setMuted(context, question, [](bool isMuted) { return !isMuted; });
}

void startVoice(const ControlContext &context, Question *question)
{
    switchOn(*context.models.serviceManager);
    context.models.voiceVM->start();
    answerWhenUp(context.models.voiceVM, question);
}

void stopVoice(const ControlContext &context, Question *question)
{
    context.models.voiceVM->stop();
    tellVoice(*context.models.voiceVM, question);
}

void restartVoice(const ControlContext &context, Question *question)
{
    switchOn(*context.models.serviceManager);
    VoiceViewModel *const voice = context.models.voiceVM;
    voice->restart();
    QObject::connect(
        voice, &VoiceViewModel::isLaunchingChanged, question,
        [voice, question] { answerWhenUp(voice, question); }, Qt::SingleShotConnection);
}

} // namespace ostrelle::command
