#include "app/RunProgram.h"

#include <QCoreApplication>

// Called by the program's main, by this name.
extern "C" int runHeadless(int argc, char **argv)
{
    const QByteArray link = ostrelle::prepareProgram({argv, static_cast<std::size_t>(argc)});
    const QCoreApplication application(argc, argv);
    return ostrelle::runProgram(link);
}
