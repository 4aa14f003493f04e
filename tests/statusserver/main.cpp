#include "platform/ProcessSetup.h"
#include "statusserver/DigestTest.h"
#include "statusserver/HostileClientsTest.h"
#include "statusserver/ProtocolTest.h"
#include "statusserver/RequestTest.h"

#include <QCoreApplication>
#include <QTest>

int main(int argc, char **argv)
{
    ostrelle::prepareProcess();
    const QCoreApplication application(argc, argv);
    int failures = 0;
    const auto run = [&](QObject &&test) { failures += QTest::qExec(&test, argc, argv); };
    run(RequestTest());
    run(DigestTest());
    run(ProtocolTest());
    run(HostileClientsTest());
    return failures;
}
