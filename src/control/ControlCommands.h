#pragma once

#include "control/ControlServer.h"
#include "control/Question.h"

#include <QJsonArray>
#include <QPointer>

namespace ostrelle
{

// One function a command. Each answers the question, now or later. Main thread only.
namespace command
{

// These answer without the program too, from the files.
void tellStatus(const ControlContext &context, Question *question);
void tellAgents(const ControlContext &context, Question *question);
void tellProjects(const ControlContext &context, Question *question);
void tellCron(const ControlContext &context, Question *question);
void checkSetup(const ControlContext &context, Question *question);
void diagnose(const ControlContext &context, Question *question);

// What the setup sheet does. Progress is waited for until there is some.
void installEverything(const ControlContext &context, Question *question);
void installVoice(const ControlContext &context, Question *question);
void configureServe(const ControlContext &context, Question *question);
void tellProgress(const ControlContext &context, Question *question);

// The dashboards, the chat and the voice agent.
void setAgent(const ControlContext &context, Question *question);
void resetAgent(const ControlContext &context, Question *question);
void syncProjects(const ControlContext &context, Question *question);
void openPanel(const ControlContext &context, Question *question);
void quit(const ControlContext &context, Question *question);
void chat(const ControlContext &context, Question *question);
void mute(const ControlContext &context, Question *question);
void unmute(const ControlContext &context, Question *question);
void toggleMute(const ControlContext &context, Question *question);
void startVoice(const ControlContext &context, Question *question);
void stopVoice(const ControlContext &context, Question *question);
void restartVoice(const ControlContext &context, Question *question);

// The settings.
void tellSettings(const ControlContext &context, Question *question);
void switchSettingOn(const ControlContext &context, Question *question);
void switchSettingOff(const ControlContext &context, Question *question);
void setGeminiKey(const ControlContext &context, Question *question);
void removeGeminiKey(const ControlContext &context, Question *question);
void tellGateways(const ControlContext &context, Question *question);
void useGateway(const ControlContext &context, Question *question);
void findDevices(const ControlContext &context, Question *question);
void addGateway(const ControlContext &context, Question *question);
void addDevice(const ControlContext &context, Question *question);
void removeGateway(const ControlContext &context, Question *question);
void encryptGateway(const ControlContext &context, Question *question);
void setToken(const ControlContext &context, Question *question);
void removeToken(const ControlContext &context, Question *question);
void resetToken(const ControlContext &context, Question *question);
void pair(const ControlContext &context, Question *question);

} // namespace command

} // namespace ostrelle
