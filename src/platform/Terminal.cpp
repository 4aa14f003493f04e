#include "platform/Terminal.h"

#include "platform/ChildProcess.h"
#include "platform/SearchPath.h"

#include <array>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

struct Terminal {
    QLatin1StringView program;
    QLatin1StringView beforeCommand; // the argument that a command follows; empty: none
};

// The system's choice first.
constexpr std::array terminals{Terminal{"x-terminal-emulator"_L1, "-e"_L1},
                               Terminal{"gnome-terminal"_L1, "--"_L1},
                               Terminal{"ptyxis"_L1, "--"_L1},
                               Terminal{"kgx"_L1, "-e"_L1},
                               Terminal{"konsole"_L1, "-e"_L1},
                               Terminal{"xfce4-terminal"_L1, "-e"_L1},
                               Terminal{"mate-terminal"_L1, "-e"_L1},
                               Terminal{"lxterminal"_L1, "-e"_L1},
                               Terminal{"qterminal"_L1, "-e"_L1},
                               Terminal{"tilix"_L1, "-e"_L1},
                               Terminal{"terminator"_L1, "-x"_L1},
                               Terminal{"alacritty"_L1, "-e"_L1},
                               Terminal{"kitty"_L1, ""_L1},
                               Terminal{"foot"_L1, ""_L1},
                               Terminal{"xterm"_L1, "-e"_L1}};

// setsid, so that the terminal does not end with this program. A terminal that cannot open its
// window ends at once, and its exit status is the result; some hand the command to a running
// instance and end with success.
const QString startDetached =
    u"setsid \"$@\" & for i in 1 2 3 4 5; do sleep 0.1; kill -0 $! || { wait $!; exit; }; done"_s;

} // namespace

bool openInTerminal(const QString &script)
{
    for (const auto &[program, beforeCommand] : terminals) {
        const auto path = findProgram(program, qEnvironmentVariable("PATH"));
        if (!path) {
            continue;
        }
        QStringList arguments{u"-c"_s, startDetached, u"sh"_s, *path};
        if (!beforeCommand.isEmpty()) {
            arguments.append(beforeCommand);
        }
        const auto started = runChild({.program = u"/bin/sh"_s, .arguments = arguments << script},
                                      {.capture = Capture::Nothing});
        return started && started->exitStatus == 0;
    }
    return false;
}

} // namespace ostrelle
