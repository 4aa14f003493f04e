#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <chrono>
#include <expected>
#include <functional>
#include <optional>
#include <stop_token>
#include <sys/types.h>

namespace ostrelle
{

// What to start: a path, or a name that is looked for in PATH. An absent environment means the
// program's own. Folders that anybody may write to are taken out of its PATH.
struct ChildCommand {
    QString program;
    QStringList arguments = {};
    std::optional<QProcessEnvironment> environment = std::nullopt;
    QString workingDirectory = {};
};

// Which of the child's streams is collected; the others go to the null device.
enum class Capture { Nothing, StandardOutput, StandardError, Merged };

struct ChildOptions {
    Capture capture = Capture::StandardOutput;
    // What the child reads from its standard input; the null device when empty. A pipe must be able
    // to hold it at once.
    QByteArray input = {};
    // How long the child may run; it is killed after that. None: as long as it likes.
    std::optional<std::chrono::milliseconds> killAfter = std::nullopt;
    // When its time is up, the child is first asked to end and given this long to do so.
    std::chrono::milliseconds killGrace = std::chrono::milliseconds(0);
    // Gets the output piece by piece as it arrives, on the calling thread, in place of the result;
    // it may then be of any size.
    std::function<void(const QByteArray &piece)> onOutput = nullptr;
    // A child that writes more is killed, so that a flood cannot fill the memory. Far beyond any
    // list of sessions, jobs or devices.
    qsizetype maxOutputBytes = qsizetype{16} * 1024 * 1024;
    // Whether those who still hold the child's output when it has ended are killed, after a second
    // to end by themselves. What the child started apart from its output, a service say, lives on.
    bool killLeftovers = false;
    // The child is killed when this is requested.
    std::stop_token stop = {};
};

struct ChildResult {
    bool exitedNormally = false;
    int exitStatus = 0; // of a normal exit; else the number of the signal
    QByteArray output;
};

struct ChildFailure {
    enum class Kind { NotStarted, TimedOut, TooMuchOutput, Stopped, ProgramEnds };
    Kind kind;
    QString text; // the platform's description
};

// Runs a child to its end and returns what it wrote. Blocks: background threads only. The end is
// the end of the child itself; a grandchild that holds the pipe open does not prolong the call, but
// for the second that killLeftovers gives it. The child dies with this program, also after a
// kill -9; what it has started in turn then lives on, such as a command line's second process
// behind its shell.
std::expected<ChildResult, ChildFailure> runChild(const ChildCommand &command,
                                                  const ChildOptions &options = {});

// Kills every child that runChild() still waits for, with its process group, and lets no new one
// start: the program is about to end. Returns at once. Any thread.
void endAllChildren();

// True once endAllChildren() was called: an answer that is missing says nothing. Any thread.
bool programEnds();

// Sets up a process that is to be started by hand: in the process group with that number, or for 0
// in one of its own; with the signals and limits that this program was started with, with none of
// what this program has open, and so that it dies (not what it has started) together with the
// thread that starts it. With an output descriptor, that becomes its standard output and standard
// error; it must stay open until start() has returned.
void prepareChild(QProcess &process, pid_t group, std::optional<int> outputDescriptor);

// Asks a process that was set up with prepareChild(), and the group that it was given there, to
// end.
void askGroupToEnd(const QProcess &process, pid_t group = 0);

// Kills a process that was set up with prepareChild(), and what is left of its group. Does not wait
// for the end.
void killWithGroup(const QProcess &process, pid_t group = 0);

} // namespace ostrelle
