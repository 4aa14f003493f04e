#include "control/ControlServer.h"

#include "control/ControlCommands.h"

#include <QTimer>

#include <algorithm>
#include <array>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

using Command = void (*)(const ControlContext &context, Question *question);

// Whether somebody is there who understands.
void greet(const ControlContext & /*context*/, Question *question)
{
    question->answer({});
}

struct CommandRow {
    QLatin1StringView name;
    Command run;
    bool needsProgram = true;
};

constexpr bool fromFilesToo = false;

constexpr std::array commands{
    CommandRow{"hello"_L1, &greet},
    CommandRow{"status"_L1, &command::tellStatus, fromFilesToo},
    CommandRow{"agents"_L1, &command::tellAgents, fromFilesToo},
    CommandRow{"projects"_L1, &command::tellProjects, fromFilesToo},
    CommandRow{"cron"_L1, &command::tellCron, fromFilesToo},
    CommandRow{"setup"_L1, &command::checkSetup, fromFilesToo},
    CommandRow{"diagnose"_L1, &command::diagnose, fromFilesToo},
    CommandRow{"setup-install"_L1, &command::installEverything},
    CommandRow{"setup-voice"_L1, &command::installVoice},
    CommandRow{"setup-serve"_L1, &command::configureServe},
    CommandRow{"setup-progress"_L1, &command::tellProgress},
    CommandRow{"settings"_L1, &command::tellSettings},
    CommandRow{"setting-on"_L1, &command::switchSettingOn},
    CommandRow{"setting-off"_L1, &command::switchSettingOff},
    CommandRow{"gemini-key-set"_L1, &command::setGeminiKey},
    CommandRow{"gemini-key-remove"_L1, &command::removeGeminiKey},
    CommandRow{"agent-set"_L1, &command::setAgent},
    CommandRow{"agent-reset"_L1, &command::resetAgent},
    CommandRow{"projects-sync"_L1, &command::syncProjects},
    CommandRow{"panel"_L1, &command::openPanel},
    CommandRow{"quit"_L1, &command::quit},
    CommandRow{"chat"_L1, &command::chat},
    CommandRow{"mute"_L1, &command::mute},
    CommandRow{"unmute"_L1, &command::unmute},
    CommandRow{"mute-toggle"_L1, &command::toggleMute},
    CommandRow{"voice-start"_L1, &command::startVoice},
    CommandRow{"voice-stop"_L1, &command::stopVoice},
    CommandRow{"voice-restart"_L1, &command::restartVoice},
    CommandRow{"gateways"_L1, &command::tellGateways},
    CommandRow{"gateway-use"_L1, &command::useGateway},
    CommandRow{"gateway-find"_L1, &command::findDevices},
    CommandRow{"gateway-add"_L1, &command::addGateway},
    CommandRow{"gateway-add-device"_L1, &command::addDevice},
    CommandRow{"gateway-remove"_L1, &command::removeGateway},
    CommandRow{"gateway-encrypt"_L1, &command::encryptGateway},
    CommandRow{"token-set"_L1, &command::setToken},
    CommandRow{"token-remove"_L1, &command::removeToken},
    CommandRow{"token-reset"_L1, &command::resetToken},
    CommandRow{"pair"_L1, &command::pair},
};

// Before the conversation ends without an answer.
constexpr std::chrono::seconds patience{140};

QByteArray boundedLine(ControlAnswer answer)
{
    QByteArray line = answer.toLine();
    if (line.size() < maxAnswerBytes) {
        return line;
    }
    answer.content =
        std::unexpected(ControlProblem{ControlProblem::Kind::Failed, u"the answer is too long"_s});
    return answer.toLine();
}

} // namespace

ControlServer::ControlServer(ControlContext context, QObject *parent)
    : QObject(parent)
    , m_context(std::move(context))
{
}

void ControlServer::ask(const QByteArray &line, QObject *asker,
                        const std::function<void(const QByteArray &line)> &reply) const
{
    const auto write = [version = m_context.version,
                        isRunning = m_context.isRunning](const Question::Answer &content) {
        return boundedLine({.version = version, .isRunning = isRunning, .content = content});
    };
    const auto request = readRequest(line, m_context.version);
    if (!request) {
        reply(write(std::unexpected(request.error())));
        return;
    }
    const auto *const known = std::ranges::find(commands, request->command, &CommandRow::name);
    if (known == commands.end() || (known->needsProgram && !m_context.isRunning)) {
        reply(write(std::unexpected(
            ControlProblem{ControlProblem::Kind::Command, u"Ostrelle "_s + m_context.version +
                                                              u" does not know this command"_s})));
        return;
    }
    auto *const question = new Question(request->arguments, asker, write, reply);
    QTimer::singleShot(patience, question, [question] {
        question->fail(u"this takes longer than it should; it may still be done"_s);
    });
    known->run(m_context, question);
}

} // namespace ostrelle

#include "moc_ControlServer.cpp"
