#include "app/RunProgram.h"

#include <QCoreApplication>

// Called by the program's main, by this name.
extern "C" int runHeadless(int argc, char **argv, const char *link)
{
    ostrelle::prepareProgram();
    const QCoreApplication application(argc, argv);
    return ostrelle::runProgram(link);
}
