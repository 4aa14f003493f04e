#include "ctl/Setup.h"

#include "ctl/Input.h"
#include "ctl/Tables.h"
#include "platform/ProcessDescriptor.h"

#include <QJsonArray>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <expected>
#include <initializer_list>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

sigset_t setOf(std::initializer_list<int> signals)
{
    sigset_t set;
    ::sigemptyset(&set);
    for (const int signal : signals) {
        ::sigaddset(&set, signal);
    }
    return set;
}

// Returns once the child has ended, or one of these signals, which come to this process alone, was
// handed on to it.
void handOn(const sigset_t &ending, pid_t child)
{
    const Descriptor signals(::signalfd(-1, &ending, SFD_CLOEXEC));
    const Descriptor process = processDescriptor(child);
    if (!process) {
        return;
    }
    std::array<pollfd, 2> waiting{{{.fd = process.get(), .events = POLLIN, .revents = 0},
                                   {.fd = signals.get(), .events = POLLIN, .revents = 0}}};
    ::poll(waiting.data(), waiting.size(), -1);
    if (waiting[1].revents != 0) {
        ::kill(child, SIGTERM);
    }
}

// Runs it in a process of its own, and with it goes what was typed. What interrupts or ends this
// process waits here until the other one has put the terminal to rights, and takes it along.
int inChildProcess(int (*work)())
{
    const pid_t parent = ::getpid();
    const sigset_t ending = setOf({SIGTERM, SIGHUP});
    const sigset_t delayed = setOf({SIGINT, SIGQUIT, SIGTERM, SIGHUP});
    sigset_t before;
    ::sigprocmask(SIG_BLOCK, &delayed, &before);
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM); // nobody can delay a kill
        ::sigprocmask(SIG_SETMASK, &before, nullptr);
        std::_Exit(::getppid() == parent ? work() : SomethingIsWrong);
    }
    if (child < 0) {
        complain(QString::fromLocal8Bit(std::strerror(errno)));
        return SomethingIsWrong;
    }
    handOn(ending, child);
    int status = 0;
    ::waitpid(child, &status, 0);
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
    return WIFEXITED(status) ? WEXITSTATUS(status) : SomethingIsWrong;
}

// Where to follow it from, or what to end with.
std::expected<qint64, int> begin(const ControlRequest &request)
{
    const Asked asked = ask(request);
    if (const auto status = complaint(asked)) {
        return std::unexpected(*status);
    }
    if (asked.answer->value("joined"_L1).toBool()) {
        complain(u"that is under way already, and goes on as it was begun"_s);
    }
    return asked.answer->value("next"_L1).toInteger();
}

int handPasswordOver()
{
    const QString password = readSecret(u"Login password, for sudo: "_s);
    if (password.isEmpty()) {
        complain(u"there is no password on the standard input"_s);
        return WrongUsage;
    }
    const auto begun =
        begin({.command = u"setup-install"_s, .arguments = {{"password"_L1, password}}});
    return begun ? Well : begun.error();
}

extern "C" void tellThatWorkGoesOn(int signal)
{
    constexpr char text[] = "\nostrellectl: Ostrelle goes on with it; "
                            "\"ostrellectl setup progress\" shows it again\n";
    [[maybe_unused]] const ssize_t count = ::write(STDERR_FILENO, text, std::strlen(text));
    std::raise(signal); // which ends the program, once this has returned
}

// Does nothing in a job that a script has put into the background: that is not interrupted.
void tellWhenInterrupted()
{
    struct sigaction action{};
    ::sigaction(SIGINT, nullptr, &action);
    if (action.sa_handler == SIG_IGN) {
        return;
    }
    action = {};
    action.sa_handler = &tellThatWorkGoesOn;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
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

// What is missing at the end, with what mends it. The installer may have failed, and everything be
// there nevertheless.
int finish(const QJsonObject &data, const Shown &shown)
{
    const QJsonArray missing = missingIn(data["checks"_L1]);
    if (!shown.asJson) {
        print(setupText({{"checks"_L1, missing}}, shown.terminal), shown.terminal);
    }
    const QString problem = printable(data["problem"_L1].toString());
    if (!problem.isEmpty()) {
        complain(problem);
    }
    return missing.isEmpty() && problem.isEmpty() ? Well : SomethingIsWrong;
}

// From the message of that number on.
int follow(qint64 first, const Shown &shown)
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
        if (data["working"_L1].toBool() && data["messages"_L1].toArray().isEmpty() &&
            !pauseWhileSomebodyReads()) {
            return SomethingIsWrong;
        }
    }
    return finish(data, shown);
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
    return follow(0, shown);
}

int installEverything(const Shown &shown)
{
    const int status = inChildProcess(&handPasswordOver);
    if (status != Well) {
        return status;
    }
    return follow(0, shown);
}

int install(const QString &command, const Shown &shown)
{
    const auto begun = begin({.command = command});
    if (!begun) {
        return begun.error();
    }
    return follow(*begun, shown);
}

} // namespace ostrelle
