// Ostrelle from a terminal: asks the running program, or else its files, and prints what they say.

#include "ctl/Asking.h"
#include "ctl/CommandLine.h"

#include <QtGlobal>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    std::setlocale(LC_CTYPE, "");
    // Whoever reads only the beginning ends the program; some parents have it ignore that.
    std::signal(SIGPIPE, SIG_DFL);
    // What Qt has to say about the environment is nothing to the user.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    int status = ostrelle::runCommandLine(argc, argv);
    const bool isTaken = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (!isTaken && status == ostrelle::Well) { // the help or the version
        status = ostrelle::SomethingIsWrong;
    }
    // Without waiting for what may hang in the background.
    std::_Exit(status);
}
