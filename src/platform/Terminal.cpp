#include "platform/Terminal.h"

#include "platform/ChildProcess.h"

#include <QStandardPaths>

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

} // namespace

bool openInTerminal(const QString &script)
{
    for (const auto &[program, beforeCommand] : terminals) {
        const QString path = QStandardPaths::findExecutable(program);
        if (path.isEmpty()) {
            continue;
        }
        // A session of its own: the terminal is no child that would end with this program.
        QStringList arguments{u"--fork"_s, path};
        if (!beforeCommand.isEmpty()) {
            arguments.append(beforeCommand);
        }
        const auto started = runChild({.program = u"setsid"_s, .arguments = arguments << script},
                                      {.capture = Capture::Nothing});
        return started && started->exitStatus == 0;
    }
    return false;
}

} // namespace ostrelle
