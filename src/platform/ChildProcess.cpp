#include "platform/ChildProcess.h"

#include "platform/Files.h"
#include "platform/NeverDestroyed.h"
#include "platform/ProcessSetup.h"

#include <QDeadlineTimer>

#include <csignal>
#include <map>
#include <mutex>
#include <sys/prctl.h>
#include <unistd.h>

// glibc 2.36 declares these functions without C linkage.
extern "C" {
#include <sys/pidfd.h>
}

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The children that somebody waits for, so that shutdown can end them. A process descriptor names
// its process for good, where a number could by then belong to a stranger.
class RunningChildren
{
public:
    static RunningChildren &instance()
    {
        static NeverDestroyed<RunningChildren> children;
        return children.object();
    }

    // False when the program is ending: the caller kills the child that it just started.
    bool add(pid_t pid)
    {
        const std::scoped_lock lock(m_mutex);
        if (!m_ending) {
            m_children.emplace(pid, Descriptor(::pidfd_open(pid, 0)));
        }
        return !m_ending;
    }

    void remove(pid_t pid)
    {
        const std::scoped_lock lock(m_mutex);
        m_children.erase(pid);
    }

    bool ending()
    {
        const std::scoped_lock lock(m_mutex);
        return m_ending;
    }

    void endAll()
    {
        const std::scoped_lock lock(m_mutex);
        m_ending = true;
        for (const auto &[pid, process] : m_children) {
            // The group goes with its leader, as long as that is surely still the one we started.
            if (::pidfd_send_signal(process.get(), SIGKILL, nullptr, 0) == 0) {
                ::kill(-pid, SIGKILL);
            }
        }
    }

private:
    std::mutex m_mutex;
    // protected by m_mutex
    std::map<pid_t, Descriptor> m_children;
    bool m_ending = false;
};

class Registration
{
public:
    explicit Registration(pid_t pid)
        : m_pid(pid)
        , m_accepted(RunningChildren::instance().add(pid))
    {
    }
    ~Registration() { RunningChildren::instance().remove(m_pid); }
    Q_DISABLE_COPY_MOVE(Registration)

    bool accepted() const { return m_accepted; }

private:
    pid_t m_pid;
    bool m_accepted;
};

QDeadlineTimer deadlineAfter(std::optional<std::chrono::milliseconds> time)
{
    return time ? QDeadlineTimer(*time) : QDeadlineTimer(QDeadlineTimer::Forever);
}

// In the form of QProcess: milliseconds, -1 for ever.
int remaining(const QDeadlineTimer &deadline)
{
    return static_cast<int>(deadline.remainingTime());
}

void connectStreams(QProcess &process, Capture capture)
{
    const QString nowhere = QProcess::nullDevice();
    process.setStandardInputFile(nowhere);
    if (capture == Capture::Merged) {
        process.setProcessChannelMode(QProcess::MergedChannels);
        return;
    }
    if (capture == Capture::StandardError) {
        process.setReadChannel(QProcess::StandardError);
    } else {
        process.setStandardErrorFile(nowhere);
    }
    if (capture != Capture::StandardOutput) {
        process.setStandardOutputFile(nowhere);
    }
}

void signalGroup(const QProcess &process, int signal)
{
    if (const auto pid = static_cast<pid_t>(process.processId()); pid > 0) {
        ::kill(-pid, signal);
    }
}

// Asks the child and its group to end; false when it still runs after that time.
bool askToEnd(QProcess &process, std::chrono::milliseconds within)
{
    signalGroup(process, SIGTERM);
    return process.waitForFinished(static_cast<int>(within.count()));
}

void killAndReap(QProcess &process)
{
    killWithGroup(process);
    process.waitForFinished(-1);
}

ChildFailure failure(ChildFailure::Kind kind, const QString &text)
{
    return {kind, text};
}

std::unexpected<ChildFailure> programIsEnding()
{
    return std::unexpected(
        failure(ChildFailure::Kind::ProgramEnds, u"The program is about to end"_s));
}

void takeOutput(QProcess &process, const ChildOptions &options, QByteArray &collected)
{
    if (options.capture == Capture::Nothing) {
        return;
    }
    const QByteArray piece = process.readAll();
    if (!options.onOutput) {
        collected += piece;
    } else if (!piece.isEmpty()) {
        options.onOutput(piece);
    }
}

// Collects the output until the child has ended; on failure the child still runs.
std::expected<QByteArray, ChildFailure> collect(QProcess &process, const ChildOptions &options)
{
    const QDeadlineTimer deadline = deadlineAfter(options.killAfter);
    QByteArray output;
    while (process.state() != QProcess::NotRunning) {
        // Wakes up for output and for the end; a child that closed its output is waited for below.
        if (!process.waitForReadyRead(remaining(deadline)) && !deadline.hasExpired()) {
            process.waitForFinished(remaining(deadline));
        }
        takeOutput(process, options, output);
        if (output.size() > options.maxOutputBytes) {
            return std::unexpected(
                failure(ChildFailure::Kind::TooMuchOutput, u"The command wrote too much output"_s));
        }
        if (deadline.hasExpired() && process.state() != QProcess::NotRunning) {
            return std::unexpected(
                failure(ChildFailure::Kind::TimedOut, u"The command timed out"_s));
        }
    }
    return output;
}

} // namespace

void prepareChild(QProcess &process, std::optional<int> outputDescriptor)
{
    const pid_t parent = ::getpid();
    process.setChildProcessModifier([parent, outputDescriptor] {
        restoreForChild();
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) {
            ::_exit(127); // the parent was killed before the line above could take effect
        }
        if (outputDescriptor) {
            ::dup2(*outputDescriptor, STDOUT_FILENO);
            ::dup2(*outputDescriptor, STDERR_FILENO);
        }
    });
}

void killWithGroup(QProcess &process)
{
    signalGroup(process, SIGKILL);
    process.kill(); // a child that has not made its group yet
}

std::expected<ChildResult, ChildFailure> runChild(const ChildCommand &command,
                                                  const ChildOptions &options)
{
    QProcess process;
    prepareChild(process);
    connectStreams(process, options.capture);
    process.setProgram(command.program);
    process.setArguments(command.arguments);
    process.setWorkingDirectory(command.workingDirectory);
    if (command.environment) {
        process.setProcessEnvironment(*command.environment);
    }
    process.start();
    if (!process.waitForStarted(-1)) {
        return std::unexpected(failure(ChildFailure::Kind::NotStarted, process.errorString()));
    }

    const auto pid = static_cast<pid_t>(process.processId());
    const Registration registration(pid);
    const auto output = registration.accepted()
                            ? collect(process, options)
                            : std::expected<QByteArray, ChildFailure>(programIsEnding());
    if (!output) {
        const bool hasGrace = output.error().kind == ChildFailure::Kind::TimedOut &&
                              options.killGrace > std::chrono::milliseconds(0);
        if (!hasGrace || !askToEnd(process, options.killGrace)) {
            killAndReap(process);
        }
        return std::unexpected(output.error());
    }
    if (options.killLeftovers) {
        ::kill(-pid, SIGKILL);
    }
    if (programEnds()) {
        return programIsEnding(); // the child may have been cut short
    }
    return ChildResult{.exitedNormally = process.exitStatus() == QProcess::NormalExit,
                       .exitStatus = process.exitCode(),
                       .output = *output};
}

bool programEnds()
{
    return RunningChildren::instance().ending();
}

void endAllChildren()
{
    RunningChildren::instance().endAll();
}

} // namespace ostrelle
