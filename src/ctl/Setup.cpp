#include "ctl/Setup.h"

#include "ctl/Commands.h"
#include "ctl/Input.h"
#include "ctl/Tables.h"

#include <QJsonArray>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Runs it in a process of its own, and with it goes what was typed. What interrupts both waits here
// until the terminal is put to rights.
int inChildProcess(int (*work)())
{
    sigset_t interrupting;
    sigset_t before;
    ::sigemptyset(&interrupting);
    ::sigaddset(&interrupting, SIGINT);
    ::sigaddset(&interrupting, SIGQUIT);
    ::sigprocmask(SIG_BLOCK, &interrupting, &before);
    const pid_t child = ::fork();
    if (child == 0) {
        ::sigprocmask(SIG_SETMASK, &before, nullptr);
        std::_Exit(work());
    }
    if (child < 0) {
        complain(QString::fromLocal8Bit(std::strerror(errno)));
        return SomethingIsWrong;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
    return WIFEXITED(status) ? WEXITSTATUS(status) : SomethingIsWrong;
}

int handPasswordOver()
{
    const QString password = readSecret(u"Login password, for sudo: "_s);
    if (password.isEmpty()) {
        complain(u"there is no password on the standard input"_s);
        return WrongUsage;
    }
    return act({.command = u"setup-install"_s, .arguments = {{"password"_L1, password}}});
}

extern "C" void tellThatWorkGoesOn(int signal)
{
    constexpr char text[] = "\nostrellectl: Ostrelle goes on with it; "
                            "\"ostrellectl setup progress\" shows it again\n";
    static_cast<void>(::write(STDERR_FILENO, text, sizeof text - 1) < 0);
    std::raise(signal); // which ends the program, once this has returned
}

void tellWhenInterrupted()
{
    struct sigaction action{};
    action.sa_handler = &tellThatWorkGoesOn;
    action.sa_flags = SA_RESETHAND;
    ::sigaction(SIGINT, &action, nullptr);
}

void printMessages(const QJsonObject &data, const Terminal &terminal)
{
    for (const QJsonValue message : data["messages"_L1].toArray()) {
        print(printable(message.toString()) + u'\n', terminal);
    }
}

QJsonArray missingIn(const QJsonValue &checks)
{
    QJsonArray missing;
    for (const QJsonValue check : checks.toArray()) {
        if (!check["ok"_L1].toBool()) {
            missing.append(check);
        }
    }
    return missing;
}

// The installer may have failed, and everything be there nevertheless.
enum class Installer { Counts, DoesNot };

// What is missing at the end, with what mends it.
int finish(const QJsonObject &data, const Shown &shown, Installer installer)
{
    const QJsonArray missing = missingIn(data["checks"_L1]);
    if (!shown.asJson) {
        print(setupText({{"checks"_L1, missing}}, shown.terminal), shown.terminal);
    }
    const bool hasFailed =
        installer == Installer::Counts && !data["problem"_L1].toString().isEmpty();
    return missing.isEmpty() && !hasFailed ? Well : SomethingIsWrong;
}

// From the message of that number on.
int follow(qint64 first, const Shown &shown, Installer installer)
{
    tellWhenInterrupted();
    QJsonObject data{{"working"_L1, true}, {"next"_L1, first}};
    while (data["working"_L1].toBool()) {
        const Asked asked = ask({.command = u"setup-progress"_s,
                                 .arguments = {{"from"_L1, data["next"_L1].toInteger()}}});
        if (const auto status = complaint(asked)) {
            return *status;
        }
        data = withRunning(asked);
        if (shown.asJson) {
            printJson(data, shown, QJsonDocument::Compact);
        } else {
            printMessages(data, shown.terminal);
        }
        const bool isSilent =
            data["working"_L1].toBool() && data["messages"_L1].toArray().isEmpty();
        if (isSilent && !pauseWhileSomebodyReads()) {
            return SomethingIsWrong;
        }
    }
    return finish(data, shown, installer);
}

} // namespace

int showSetup(const Shown &shown)
{
    const Asked asked = ask({.command = u"setup"_s}, Otherwise::FilesTell);
    if (const auto status = complaint(asked)) {
        return *status;
    }
    const QJsonObject data = withRunning(asked);
    if (shown.asJson) {
        printJson(data, shown);
    } else {
        print(setupText(data, shown.terminal), shown.terminal);
    }
    return statusOf(asked, missingIn(data["checks"_L1]).isEmpty() ? Well : SomethingIsWrong);
}

int showProgress(const Shown &shown)
{
    return follow(0, shown, Installer::Counts);
}

int installEverything(const Shown &shown)
{
    const int status = inChildProcess(&handPasswordOver);
    return status == Well ? follow(0, shown, Installer::Counts) : status;
}

int install(const QString &command, const Shown &shown)
{
    const Asked asked = ask({.command = command});
    if (const auto status = complaint(asked)) {
        return *status;
    }
    return follow(asked.answer.content->value("next"_L1).toInteger(), shown, Installer::DoesNot);
}

} // namespace ostrelle
