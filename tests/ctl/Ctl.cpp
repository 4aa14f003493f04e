#include "ctl/Ctl.h"

#include "support/Patience.h"
#include "support/Processes.h"

#include <QDir>
#include <QJsonDocument>
#include <QProcess>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

Run run(const QString &program, const QStringList &arguments, const QByteArray &input)
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool hasEnded = QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; },
                                          patienceMilliseconds);
    const bool isWell = hasEnded && process.exitStatus() == QProcess::NormalExit;
    return {.status = isWell ? process.exitCode() : -1,
            .out = process.readAllStandardOutput(),
            .err = process.readAllStandardError()};
}

Run ctl(const QStringList &arguments, const QByteArray &input)
{
    return run(builtProgram(u"ostrellectl"_s), arguments, input);
}

Run inTerminal(const QString &command, int columns, const QByteArray &input)
{
    const QString inShell = u"stty cols %1 rows 24; ctl() { '%2' \"$@\"; }; "_s.arg(columns).arg(
                                builtProgram(u"ostrellectl"_s)) +
                            command;
    return run(u"script"_s, {u"-qec"_s, inShell, u"/dev/null"_s}, input);
}

CtlHome::CtlHome()
{
    configure(u"http://127.0.0.1:9"_s, 9);
    write(
        u".ostrelle/ostrelle-agent-tracker.json"_s,
        R"({"agents":{"scout":{"status":"busy","progressText":"1 of 2","parent":"main","model":"m",
              "detail":"r\u0301eads \u001b[31m\u202a\u202e\u2066\u2069\u200e\u200fthe news"}}})");
    write(u".ostrelle/ostrelle-project-tracker.json"_s,
          R"({"version":1,"updated":"now","projects":[{"id":"p","name":"Attic",
              "description":"tidy","status":"green","progress":40,"workstreams":[
              {"id":"w","name":"Boxes","status":"red","progress":7,"note":"all"},
              {"id":"v","name":"Shelf","status":"red","progress":10}]}]})");
    write(u".ostrelle/ostrelle-cron-tracker.json"_s,
          R"({"version":1,"updated":"now","jobs":[{"id":"1","name":"Nightly",
              "schedule":"every 1d","status":"green","enabled":false,
              "lastRun":"now","nextRun":"then","payload":"tidies"}]})");
    for (const QString &program : {u"bin/duskrell"_s, u"bin/tailscale"_s, u"bin/curl"_s}) {
        writeScript(program, "exit 1");
    }
    write(u".bash_profile"_s, "PATH=$HOME/bin:/usr/bin:/bin");
    writeScript(u".ostrelle/venv/bin/python"_s, {});
    write(u".ostrelle/data/models/kokoro-v1.0.onnx"_s, "model");
    write(u".ostrelle/data/models/voices-v1.0.bin"_s, "voices");
    qputenv("PATH", path(u"bin"_s).toUtf8() + ":/usr/bin:/bin");
}

void CtlHome::configure(const QString &gatewayURL, quint16 voicePort) const
{
    OstrelleConfig config = OstrelleConfig::defaults();
    config.ports = {.status = 0, .voiceAgent = voicePort};
    config.gateway = {.url = gatewayURL,
                      .saved = QList<SavedGateway>{{.name = u"Home"_s, .url = gatewayURL}}};
    config.save();
}

QString CtlHome::socket() const
{
    const QDir run(path(u".run"_s));
    return run.filePath(run.entryList({u"ostrelle-*"_s}, QDir::System).value(0));
}
