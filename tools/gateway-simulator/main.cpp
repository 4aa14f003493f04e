#include "ProjectTracker.h"
#include "Service.h"
#include "Tool.h"
#include "platform/ProcessSetup.h"
#include "platform/TerminationSignals.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>
#include <optional>

using namespace ostrelle;
using namespace ostrelle::simulator;
using namespace Qt::StringLiterals;

namespace
{

std::optional<ServiceOptions> optionsFrom(const QCommandLineParser &given)
{
    bool isPort = false;
    const ServiceOptions options = {.bind = QHostAddress(given.value(u"bind"_s)),
                                    .port = given.value(u"port"_s).toUShort(&isPort)};
    return isPort && !options.bind.isNull() ? std::optional(options) : std::nullopt;
}

int serve(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const TerminationSignals signals;
    QObject::connect(&signals, &TerminationSignals::terminationRequested, &application,
                     &QCoreApplication::quit);
    QCommandLineParser given;
    given.addOptions({{u"port"_s, {}, u"port"_s, u"18789"_s},
                      {u"bind"_s, {}, u"address"_s, u"127.0.0.1"_s},
                      {u"with-projects"_s, {}}});
    const bool isUnderstood = given.parse(QCoreApplication::arguments().sliced(1));
    const auto options = optionsFrom(given);
    if (!isUnderstood || !options) {
        std::fputs(usage().constData(), stderr);
        return 2;
    }
    if (given.isSet(u"with-projects"_s)) {
        static_cast<void>(fillEmptyProjectTracker(Settings::load().world));
    }
    Service service(*options);
    if (const auto started = service.start(); !started) {
        std::fprintf(stderr, "%s\n", qPrintable(started.error()));
        return 1;
    }
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    prepareProcess();
    QStringList arguments;
    for (int index = 1; index < argc; ++index) {
        arguments.append(QString::fromLocal8Bit(argv[index]));
    }
    return arguments.value(0) == "serve"_L1 ? serve(argc, argv) : runTool(arguments);
}
