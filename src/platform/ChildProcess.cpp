#include "platform/ChildProcess.h"

#include "platform/Files.h"
#include "platform/NeverDestroyed.h"
#include "platform/OutputPipe.h"
#include "platform/ProcessDescriptor.h"
#include "platform/ProcessSetup.h"
#include "platform/SearchPath.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// For those who hold the output of a child that has ended.
constexpr std::chrono::seconds leftoverGrace{1};

constexpr qsizetype mostInPipe = qsizetype{1024} * 1024;

const QString pathVariable = u"PATH"_s;

// The children that somebody waits for, so that shutdown can end them.
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
            m_children.emplace(pid, processDescriptor(pid));
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

    void end(pid_t pid)
    {
        const std::scoped_lock lock(m_mutex);
        if (const auto child = m_children.find(pid); child != m_children.end()) {
            end(*child);
        }
    }

    void endAll()
    {
        const std::scoped_lock lock(m_mutex);
        m_ending = true;
        for (const auto &child : m_children) {
            end(child);
        }
    }

private:
    // The group goes with its leader, as long as that is surely still the one we started.
    static void end(const std::pair<const pid_t, Descriptor> &child)
    {
        if (sendSignal(child.second, SIGKILL)) {
            ::kill(-child.first, SIGKILL);
        }
    }

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

// What becomes of the child's standard streams; -1: the null device.
struct Streams {
    int input;
    int output;
    int error;
};

Streams streamsOf(Capture capture, int pipe, int input)
{
    const bool takesOutput = capture == Capture::StandardOutput || capture == Capture::Merged;
    const bool takesError = capture == Capture::StandardError || capture == Capture::Merged;
    return {.input = input, .output = takesOutput ? pipe : -1, .error = takesError ? pipe : -1};
}

// The end of a pipe from which just this text can be read; none, with errno set, when it is too
// much.
Descriptor endWith(const QByteArray &text)
{
    auto pipe = Pipe::open();
    if (!pipe) {
        return Descriptor();
    }
    ::fcntl(pipe->writeEnd.get(), F_SETFL, O_NONBLOCK);
    const bool fits = ::write(pipe->writeEnd.get(), text.constData(),
                              static_cast<std::size_t>(text.size())) == text.size();
    return fits ? std::move(pipe->readEnd) : Descriptor();
}

// The group is one to join; 0: one of its own.
void prepare(QProcess &process, const Streams &streams, pid_t group = 0)
{
    const pid_t parent = ::getpid();
    process.setChildProcessModifier([parent, streams, group] {
        restoreForChild();
        ::setpgid(0, group);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) {
            ::_exit(127); // the parent was killed before the line above could take effect
        }
        if (streams.input >= 0) {
            ::dup2(streams.input, STDIN_FILENO);
        }
        if (streams.output >= 0) {
            ::dup2(streams.output, STDOUT_FILENO);
        }
        if (streams.error >= 0) {
            ::dup2(streams.error, STDERR_FILENO);
        }
    });
}

// The group is the one that it was given, whichever it may have gone to since: that may be
// anybody's.
void signalGroup(const QProcess &process, pid_t group, int signal)
{
    const auto pid = static_cast<pid_t>(process.processId());
    if (pid <= 0) {
        return;
    }
    const pid_t given = group > 0 ? group : pid;
    ::kill(-given, signal);
    if (::getpgid(pid) != given) {
        ::kill(pid, signal);
    }
}

// False when it still runs after that time.
bool endsWhenAsked(QProcess &process, std::chrono::milliseconds within)
{
    askGroupToEnd(process);
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

ChildFailure notStarted(int error)
{
    return failure(ChildFailure::Kind::NotStarted, QString::fromLocal8Bit(std::strerror(error)));
}

std::unexpected<ChildFailure> programIsEnding()
{
    return std::unexpected(
        failure(ChildFailure::Kind::ProgramEnds, u"The program is about to end"_s));
}

// What the child looks for by name is not looked for where anybody may put it.
QProcessEnvironment safeEnvironment(const ChildCommand &command)
{
    QProcessEnvironment environment =
        command.environment.value_or(QProcessEnvironment::systemEnvironment());
    environment.insert(pathVariable, withoutOpenFolders(environment.value(pathVariable)));
    return environment;
}

std::optional<QString> findByName(const QString &program, const QProcessEnvironment &environment)
{
    return program.contains(u'/') ? std::optional(program)
                                  : findProgram(program, environment.value(pathVariable));
}

// Waits for output or for the child's end. True at the end.
bool waitForChild(const OutputPipe &pipe, int process, const QDeadlineTimer &deadline)
{
    std::array<pollfd, 2> events{{{.fd = process, .events = POLLIN, .revents = 0},
                                  {.fd = pipe.readEnd(), .events = POLLIN, .revents = 0}}};
    ::poll(events.data(), events.size(), remaining(deadline));
    return events[0].revents != 0;
}

// Collects the output until the child has ended; on failure the child still runs.
std::expected<QByteArray, ChildFailure> collect(OutputPipe &pipe, int process,
                                                const ChildOptions &options)
{
    const QDeadlineTimer deadline = deadlineAfter(options.killAfter);
    QByteArray output;
    qsizetype bytesAfterEnd = 0;
    while (true) {
        const bool ended = waitForChild(pipe, process, deadline);
        const QByteArray piece = pipe.read();
        if (options.stop.stop_requested()) {
            return std::unexpected(
                failure(ChildFailure::Kind::Stopped, u"The command was stopped"_s));
        }
        if (!options.onOutput) {
            output += piece;
        } else if (!piece.isEmpty()) {
            options.onOutput(piece);
        }
        if (output.size() > options.maxOutputBytes) {
            return std::unexpected(
                failure(ChildFailure::Kind::TooMuchOutput, u"The command wrote too much output"_s));
        }
        // What it wrote before is taken, or somebody else goes on and on.
        bytesAfterEnd += ended ? piece.size() : 0;
        if (ended && (piece.isEmpty() || bytesAfterEnd > mostInPipe)) {
            return output;
        }
        if (!ended && deadline.hasExpired()) {
            return std::unexpected(
                failure(ChildFailure::Kind::TimedOut, u"The command timed out"_s));
        }
    }
}

// The output of a child that runs to its end, unless something cuts that short.
std::expected<QByteArray, ChildFailure> superviseChild(const QProcess &child, OutputPipe &pipe,
                                                       const ChildOptions &options)
{
    const auto pid = static_cast<pid_t>(child.processId());
    const Registration registration(pid);
    const Descriptor process = processDescriptor(pid);
    if (!process) {
        return std::unexpected(notStarted(errno));
    }
    if (!registration.accepted()) {
        return programIsEnding();
    }
    const std::stop_callback onStop(options.stop, [pid] { RunningChildren::instance().end(pid); });
    return collect(pipe, process.get(), options);
}

void endLeftovers(OutputPipe &pipe)
{
    const QDeadlineTimer deadline(leftoverGrace);
    while (!pipe.ended() && !deadline.hasExpired() && !programEnds()) {
        waitForChild(pipe, -1, deadline);
        pipe.read();
    }
    if (!pipe.ended()) {
        pipe.killHolders();
    }
}

} // namespace

void prepareChild(QProcess &process, pid_t group, std::optional<int> outputDescriptor)
{
    const int descriptor = outputDescriptor.value_or(-1);
    prepare(process, {.input = -1, .output = descriptor, .error = descriptor}, group);
}

void askGroupToEnd(const QProcess &process, pid_t group)
{
    signalGroup(process, group, SIGTERM);
}

void killWithGroup(const QProcess &process, pid_t group)
{
    signalGroup(process, group, SIGKILL);
}

std::expected<ChildResult, ChildFailure> runChild(const ChildCommand &command,
                                                  const ChildOptions &options)
{
    auto pipe = OutputPipe::open();
    const Descriptor input = options.input.isEmpty() ? Descriptor() : endWith(options.input);
    if (!pipe || (!input && !options.input.isEmpty())) {
        return std::unexpected(notStarted(errno));
    }
    QProcess process;
    prepare(process, streamsOf(options.capture, pipe->writeEnd(), input.get()));
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    const auto environment = safeEnvironment(command);
    const auto program = findByName(command.program, environment);
    if (!program) {
        return std::unexpected(notStarted(ENOENT));
    }
    process.setProgram(*program);
    process.setArguments(command.arguments);
    process.setWorkingDirectory(command.workingDirectory);
    process.setProcessEnvironment(environment);
    process.start();
    // The program may be on a disk that hangs.
    constexpr std::chrono::milliseconds anyTime{-1};
    if (!process.waitForStarted(static_cast<int>(options.killAfter.value_or(anyTime).count()))) {
        return std::unexpected(failure(ChildFailure::Kind::NotStarted, process.errorString()));
    }
    pipe->closeWriteEnd();
    const auto output = superviseChild(process, *pipe, options);
    if (!output) {
        const bool isAsked = output.error().kind == ChildFailure::Kind::TimedOut;
        if (!isAsked || !endsWhenAsked(process, options.killGrace)) {
            killAndReap(process);
        }
        return std::unexpected(output.error());
    }
    process.waitForFinished(-1);
    if (options.killLeftovers) {
        endLeftovers(*pipe);
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
