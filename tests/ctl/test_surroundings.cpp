#include "app/Program.h"
#include "control/Unnamed.h"
#include "ctl/Ctl.h"
#include "platform/InstancePlaces.h"
#include "support/Processes.h"
#include "support/Rows.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTest>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

// What a terminal shows of half blocks or of pairs of characters, as a picture of one byte a pixel.
QByteArray rendered(const QByteArray &output, bool isLight)
{
    constexpr int pixels = 4; // a module's side
    QList<QByteArray> rows;
    for (QString line : QString::fromUtf8(output).remove(u'\r').split(u'\n')) {
        const bool hasColors = line.contains(u'\x1b');
        line.remove(QRegularExpression(u"\x1b\\[[0-9;]*m"_s));
        if (line.isEmpty()) {
            continue;
        }
        const char ink = hasColors || isLight ? '\0' : '\xff';
        const char paper = static_cast<char>(~ink);
        const bool isAscii = output.contains('#');
        QByteArray upper;
        QByteArray lower;
        for (qsizetype i = 0; i < line.size(); i += isAscii ? 2 : 1) {
            const QChar block = line.at(i);
            const bool both = block == u'█' || block == u'#';
            upper += QByteArray(pixels, both || block == u'▀' ? ink : paper);
            lower += QByteArray(pixels, both || block == u'▄' ? ink : paper);
        }
        rows += QList<QByteArray>(pixels, upper);
        rows += isAscii ? QList<QByteArray>() : QList<QByteArray>(pixels, lower);
    }
    return "P5 " + QByteArray::number(rows.value(0).size()) + ' ' +
           QByteArray::number(rows.size()) + " 255\n" + rows.join();
}

} // namespace

class TestSurroundings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void complainsOfWrongUsage()
    {
        const CtlHome home;
        for (const QString &line : {u"fly"_s, u"status --fast"_s, u"voice"_s, u"gateways use"_s,
                                    u"token set"_s, u"chat -"_s, u"voice stop start"_s}) {
            const Run run = ctl(line.split(u' '));
            QCOMPARE(run.status, 2);
            QVERIFY2(run.err.count('\n') == 1 && run.out.isEmpty(), qPrintable(line));
        }
        QVERIFY(ctl({}).err.startsWith("ostrellectl: a command is missing (ostrellectl --help"));
    }

    void tellsWhatTheFilesSay_data()
    {
        const Rows<QStringList, QByteArray> row("arguments", "told");
        row("status", {u"status"_s}, "Home, http://127.0.0.1:9, token unknown\n");
        row("cron as JSON", {u"cron"_s, u"--json"_s}, "\"running\": false");
        row("setup as JSON", {u"setup"_s, u"--json"_s},
            "here: ostrellectl setup voice\",\n            \"commands\": [\n            ],\n");
        row("setup", {u"setup"_s}, "missing  Token configured\n           duskrell config get");
        row("a report", {u"diagnose"_s, u"-"_s}, "not running");
    }

    void tellsWhatTheFilesSay()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, told);
        const CtlHome home;
        home.write(u".duskrell/agents/main/agent"_s, {});
        QFile::remove(home.path(u".ostrelle/venv/bin/python"_s));
        home.writeScript(u"bin/python3"_s, {}); // can make another
        const Run run = ctl(arguments);
        QCOMPARE(run.status, 3);
        QCOMPARE(run.err, "ostrellectl: Ostrelle does not run\n");
        QVERIFY2(run.out.contains(told) && !run.out.startsWith('['), run.out);
        QVERIFY(!home.exists(u".ostrelle/run"_s));
    }

    void needsTheProgram()
    {
        const CtlHome home;
        for (const QString &line :
             {u"mute"_s, u"pair"_s, u"chat x"_s, u"token set"_s, u"settings"_s, u"setup voice"_s,
              u"setup install"_s, u"setup progress"_s}) {
            const Run run = ctl(line.split(u' '), "x");
            QCOMPARE(run.out + run.err, "ostrellectl: Ostrelle does not run\n");
            QCOMPARE(run.status, 3);
        }
        home.write(u".ostrelle/ostrelle-agent-tracker.json"_s,
                   R"({"agents":{"a":{"detail":")" + QByteArray(17'000'000, 'x') + R"("}}})");
        QVERIFY(ctl({u"agents"_s}).err.endsWith("\nostrellectl: the answer is too long\n"));
        home.configure(u"http://box:18789"_s, 9); // whose documents only the program asks for
        QVERIFY(ctl({u"cron"_s}).err.contains("on another machine"));
    }

    void tellsWhatIsWrong()
    {
        const CtlHome home;
        QTcpServer other;
        QVERIFY(other.listen());
        OstrelleConfig config = OstrelleConfig::load();
        config.ports.status = other.serverPort();
        config.save();
        const Program program;
        const QByteArray health =
            QByteArray("{'problems':['Gateway offline','No token for the gateway',"
                       "'Status server waiting for its port'],'running':true,'summary':'Gateway "
                       "offline, voice: Offline, status: waits for its port','well':false}\n")
                .replace('\'', '"');
        QTRY_COMPARE_WITH_TIMEOUT(ctl({u"health"_s, u"--json"_s}).out, health,
                                  patienceMilliseconds);
        const QByteArray status = ctl({u"status"_s}).out;
        QVERIFY(status.contains("  waiting for its port\n") &&
                status.contains("  Gateway offline\n"));
    }

    void givesUpWhoIsStopped()
    {
        const CtlHome home;
        Program program;
        QVERIFY(program.waitForPort() != 0);
        ::kill(program.pid(), SIGSTOP);
        QElapsedTimer timer;
        for (const QString &command : {u"health"_s, u"agents"_s, u"panel"_s}) {
            timer.start();
            const Run run = ctl({command});
            QCOMPARE(run.status, 3);
            QVERIFY((run.err + run.out).contains("Ostrelle does not answer\n"));
            QVERIFY2(timer.elapsed() < 5000, qPrintable(command)); // 1500 ms of it are its patience
        }
        QCOMPARE(Program().waitForEnd(), 1);
        ::kill(program.pid(), SIGCONT);
    }

    void watchesFromOneProgramToTheNext()
    {
        const CtlHome home;
        QProcess watch;
        auto hears = [&, heard = QByteArray()](const char *text) mutable {
            return QTest::qWaitFor([&] { return (heard += watch.readAll()).contains(text); },
                                   patienceMilliseconds);
        };
        watch.setProcessChannelMode(QProcess::MergedChannels);
        watch.start(builtProgram(u"ostrellectl"_s), {u"status"_s, u"--watch"_s});
        QVERIFY(hears("Ostrelle does not run\n"));
        QCOMPARE(inTerminal(u"ctl status --watch --json | head -n 1"_s, 80).out,
                 "{\"running\":false}\r\n"); // the rest is not read
        Program program;
        QVERIFY(hears("Ostrelle does not run\nGateway ") && hears("Status server  running"));
        QCOMPARE(program.endWith(SIGTERM), 0);
        QVERIFY(hears("\n\nostrellectl: Ostrelle does not run\n"));
        watch.kill();
        QVERIFY(watch.waitForFinished());
    }

    void meetsOthersAtTheSocket_data()
    {
        const Rows<QByteArray, int, QByteArray> row("answer", "status", "told");
        row("a newer program", "{\"protocol\":2,\"version\":\"9.0\"}\n", 1,
            "Ostrelle 9.0 is newer than this ostrellectl");
        row("one that knows only starts", "received\n", 1, "is older than this ostrellectl");
        row("garbage", "\xff\xfe{\n", 1, "cannot be understood");
        row("commands for the terminal",
            "{\"protocol\":1,\"problem\":{\"text\":\"\\u001b[2J\\nx\"}}\n", 1, " [2J x\n");
        row("no end", QByteArray(17'000'000, 'x'), 3, "does not answer");
        row("a word and silence", "{", 3, "does not answer");
        row("the end", {}, 3, "does not answer");
        row("an empty line", "\n", 1, "cannot be understood");
        row("nothing in it", "{\"protocol\":1}\n", 1, "cannot be understood");
        row("nothing of health", "{\"protocol\":1,\"data\":{}}\n", 1, "does not say whether");
        row("a problem without words", "{\"protocol\":1,\"problem\":{}}\n", 1, "does not say why");
        row("a document without a name",
            R"({"protocol":1,"data":{"documents":[{"age":?,"ageSeconds":?}],"problems":["all"]}})"
            "\n",
            1, "all\n");
    }

    void meetsOthersAtTheSocket()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QByteArray, told);
        QFETCH(int, status);
        const CtlHome home;
        QLocalServer server;
        QVERIFY(server.listen(instanceSocket()));
        int asked = 0;
        connect(&server, &QLocalServer::newConnection, &server, [&] {
            QLocalSocket *const client = server.nextPendingConnection();
            const QByteArray text = QByteArray(answer).replace('?', QByteArray::number(++asked));
            connect(client, &QLocalSocket::readyRead, client, [client, text] {
                text.isEmpty() ? client->abort() : static_cast<void>(client->write(text));
            });
        });
        for (const QString &line : {u"status"_s, u"setup"_s, u"diagnose -"_s}) {
            QVERIFY(!answer.endsWith('\n') ||
                    ctl(line.split(u' ')).status == (answer.contains("data") ? 0 : status));
        }
        const QString watch = u"timeout 3 $OSTRELLE_BINARY_DIR/ostrellectl status --watch --json"_s;
        QVERIFY(told != "all\n" || (inTerminal(watch, 80).out.count('\n') == 1 && asked > 4));
        const Run run = ctl({u"health"_s});
        QCOMPARE(run.status, status);
        QVERIFY2(run.out.contains(told), run.out);
    }

    // From everybody who lists processes.
    void hidesTheQuestion()
    {
        const CtlHome home;
        QLocalServer server;
        QVERIFY(server.listen(instanceSocket()));
        QProcess chat;
        chat.start(builtProgram(u"ostrellectl"_s), {u"chat"_s, u"something"_s, u"private"_s});
        QTRY_VERIFY(server.hasPendingConnections());
        QFile commandLine(u"/proc/%1/cmdline"_s.arg(chat.processId()));
        QVERIFY(commandLine.open(QIODevice::ReadOnly));
        QCOMPARE(commandLine.readAll().replace('\0', ' ').simplified().split('/').last(),
                 "ostrellectl chat");
        chat.kill();
        QVERIFY(chat.waitForFinished());
    }

    void namesNobody()
    {
        const QStringList saved{u"http://127.0.0.1:1"_s,  u"https://far.ts.net"_s,
                                u"http://far.ts.net:2"_s, u"/"_s,
                                u"http://box"_s,          u"::1"_s};
        const QString text = u"fe80::1 far.ts.net box http://BOX:1 xfar.ts.netx @box2 127.0.0.1:8 "
                             "0.0.0.0 ::1 (203.0.113.5:8) v1.2.3.4 1.2.3.4.5 [2001:db8::7]:8 "
                             "10:20:30 :: \"evil\" refused: its address"_s;
        QCOMPARE(unnamed(text, saved),
                 u"[host] [host 1] box http://[host 2]:1 [host]x @box2 127.0.0.1:8 0.0.0.0 "
                 "::1 ([host]:8) v1.2.3.4 1.2.3.4.5 [[host]]:8 10:20:30 "
                 ":: \"[host]\" refused: its address"_s);
    }

    // Where somebody else listens nothing is said.
    void saysNothingToStrangers()
    {
        if (::geteuid() != 0) {
            QSKIP("only root can be somebody else");
        }
        const CtlHome home;
        const QString place = instanceSocket();
        ::chmod(qPrintable(home.path()), 0711);
        ::chmod(qPrintable(home.path(u".run"_s)), 0777);
        QProcess stranger;
        const QString listen =
            u"import socket,sys; s=socket.socket(socket.AF_UNIX); s.bind(sys.argv[1]); s.listen();"
            "print('ready', flush=True); print(s.accept()[0].recv(99), flush=True)"_s;
        stranger.start(u"/usr/bin/setpriv"_s, {u"--reuid"_s, u"65534"_s, u"--clear-groups"_s,
                                               u"/usr/bin/python3"_s, u"-c"_s, listen, place});
        QTRY_VERIFY2(stranger.canReadLine(), stranger.readAllStandardError());
        ::chmod(qPrintable(home.path(u".run"_s)), 0700);
        const Run run = ctl({u"token"_s, u"set"_s}, "secret\n");
        QCOMPARE(run.status, 3);
        QVERIFY(run.err.contains("another user"));
        QTRY_COMPARE(stranger.state(), QProcess::NotRunning);
        QCOMPARE(stranger.readAll(), "ready\nb''\n");
    }

    void suitsTheOutput()
    {
        const CtlHome home;
        const QString agents = u"ctl agents 2>/dev/null"_s;
        QVERIFY(inTerminal(u"export NO_COLOR=; "_s + agents, 30)
                    .out.contains("  \x1b[1mMODEL\x1b[0m  \x1b[1mDETAIL\x1b[0m\r\n🧠 Ma…  "
                                  "\x1b[32mactive\x1b[0m         Primar…\r\n"));
        QCOMPARE(inTerminal(u"export NO_COLOR=1; "_s + agents, 30).out,
                 "AGENT   STATUS  MODEL  DETAIL\r\n"
                 "🧠 Ma…  active         Primar…\r\n✨ Sc…  busy …  m      r\u0301eads …\r\n");
        QCOMPARE(inTerminal(u"export TERM=dumb LC_ALL=C; "_s + agents, 9).out,
                 "AG~  ST~  MO~  DE~\r\n? ~  ac~       Pr~\r\n? ~  bu~  m    r?~\r\n");
        QVERIFY(inTerminal(u"LC_ALL=C ctl agents --json"_s, 80).out.contains("✨"));
        const QString far = u"XDG_RUNTIME_DIR=~/.$(printf %090d) ctl status 2>&1 | head -n 1"_s;
        QCOMPARE(inTerminal(far, 80).out, "ostrellectl: Ostrelle does not run\r\n");
        QVERIFY(inTerminal(u"HOME=/ ctl status 2>&1"_s, 200).out.contains(", //.ostrelle/"));
        const QString full =
            u"(ctl --help || ctl --version || ctl completions zsh) >/dev/full || LC_ALL=C ctl ✓"_s;
        QVERIFY(inTerminal(full, 80).out.contains(
            " left on device\r\nostrellectl: The following argument was not expected: ok "));
        const QString diagnose =
            u"DISPLAY=far:7 ctl diagnose --yes ~/yes; a=$?; DISPLAY=:8 ctl diagnose ~/agreed; "
            "ctl diagnose ~/piped >/dev/null; ctl diagnose ~/refused 2>~/bin/asked; trap '' XFSZ; "
            "ulimit -f 1; ctl diagnose --yes ~/unfinished; echo ?$?$a; ls -x ~; "
            "grep -ohe '^DIS.*' -e '\\[y/N]' ~/yes ~/agreed ~/bin/asked"_s;
        QCOMPARE(inTerminal(diagnose, 80, "y\n").out.split('?').last(),
                 "13\r\nagreed\tbin  piped  yes\r\nDISPLAY=:7\r\nDISPLAY=:8\r\n[y/N]\r\n");
        // Whatever ends it at its question leaves a terminal that shows what is typed.
        const QString ends =
            u"cat; exec 2>/dev/null; for how in 'TERM token set' 'TERM setup install' 'KILL setup "
            "install'; do eval \"$OSTRELLE_BINARY_DIR/ostrellectl ${how#* } < /dev/tty &\"; "
            "until stty -a | grep -qwe -echo; do :; done; kill -${how%% *} $!; "
            "while stty -a | grep -qwe -echo; do :; done; wait $!; echo $?; done"_s;
        QCOMPARE(inTerminal(ends, 80).out, "143\r\n143\r\n137\r\n");
    }

    void completes()
    {
        const auto completed = [](const QString &before, const QString &word) {
            return inTerminal(u"ctl completions bash > ~/completions; bash -c 'compopt() { :; }; "
                              ". ~/completions; COMP_WORDS=(x %1 %2); "
                              "((COMP_CWORD = ${#COMP_WORDS[@]} - 1)); "
                              "_ostrellectl $OSTRELLE_BINARY_DIR/ostrellectl %2; "
                              "echo ${COMPREPLY[*]}'"_s.arg(before, word),
                              80)
                .out;
        };
        const CtlHome home;
        QCOMPARE(completed(u"voice"_s, u"\"\""_s), "start stop restart --help\r\n");
        QCOMPARE(completed(u"voice"_s, u"re"_s), "restart\r\n");
        QCOMPARE(completed(u"completions"_s, u"z"_s), "zsh\r\n");
        QCOMPARE(completed(u"diagnose"_s, u"\"\""_s), "\r\n"); // but files
        QCOMPARE(completed(u"gateways use"_s, u"H"_s), "\r\n");
        Program program;
        QVERIFY(program.waitForPort() != 0);
        QCOMPARE(completed(u"gateways use"_s, u"H"_s), "Home\r\n");
        const QString inOthers =
            u"cd; PATH=$OSTRELLE_BINARY_DIR:$PATH; for s in fish zsh; do ctl completions $s > $s; "
            u"done; "
            "fish -c '. ~/fish; for line in \"voice r\" \"gateways use H\" \"diagnose f\"; "
            "complete -C \"ostrellectl $line\"; end'; zsh -c '_describe() { print -rl -- $list }; "
            "_files() { print file }; compadd() { print -r -- $2 }; take() { CURRENT=$#; "
            "words=($@); . ~/zsh }; take ostrellectl gateways use H; take ostrellectl diagnose f'"_s;
        const QByteArray help = "--help:Print this help message and exit\r\n";
        QCOMPARE(inTerminal(inOthers, 80).out,
                 "restart\tStops it and starts it again\r\nHome\r\nfish\r\nHome\r\n" + help +
                     "file\r\n" + help + "--yes:Do not ask before it is written\r\n");
    }

    void aCameraReadsTheCode_data()
    {
        const Rows<QString, bool, QByteArray> row("command", "isLight", "size");
        row("with colours", u"stty rows 25; ctl pair"_s, false, "180 184"); // in pixels
        row("a dark terminal", u"stty rows 0; NO_COLOR=1 ctl pair"_s, false, "180 184");
        row("a light terminal", u"NO_COLOR=1 ctl pair --light"_s, true, "180 184");
        row("ASCII", u"LC_ALL=C NO_COLOR=1 ctl pair --light 2>/dev/null"_s, true, "180 180");
        row("a pipe", u"ctl pair | cat"_s, false, "196 200");
    }

    void aCameraReadsTheCode()
    {
        QFETCH(QString, command);
        QFETCH(bool, isLight);
        QFETCH(QByteArray, size);
        const CtlHome home;
        Program program;
        QVERIFY(program.waitForPort() != 0);
        QProcess typing;
        typing.start(u"script"_s,
                     {u"-qec"_s, u"$OSTRELLE_BINARY_DIR/ostrellectl token set"_s, u"/dev/null"_s});
        // The prompt comes once typing is hidden.
        QTRY_COMPARE_WITH_TIMEOUT(typing.bytesAvailable(), 7, patienceMilliseconds);
        typing.write("t0k&n" + QByteArray(43, 'x') + '\n');
        QVERIFY(typing.waitForFinished());
        QCOMPARE(typing.readAll(), "Token: \r\n");
        const Run shown = inTerminal(u"export LC_ALL=C.UTF-8; "_s + command, 90);
        QCOMPARE(shown.status, 0);
        const QByteArray code = rendered(shown.out, isLight);
        const QString picture = home.write(u"code.pgm"_s, code);
        const Run read = run(u"zbarimg"_s, {u"-q"_s, u"--raw"_s, picture});
        QVERIFY2(read.out.contains("&token=t0k%26nx"), shown.out + read.err);
        QVERIFY2(code.startsWith("P5 " + size), code.left(20));
        QVERIFY(inTerminal(u"ctl pair --text || echo $?"_s, 120).out.endsWith("token\r\n2\r\n"));
        QVERIFY(inTerminal(u"ctl pair --text --show-token"_s, 120).out.contains("t0k%26nx"));
        QVERIFY(inTerminal(u"stty rows 1; ctl pair"_s, 0).out.contains("terminal of 24 lines"));
        QVERIFY(inTerminal(u"LC_ALL=C ctl pair || echo $?"_s, 0).out.endsWith(" wide\r\n1\r\n"));
    }
};

QTEST_GUILESS_MAIN(TestSurroundings)
#include "test_surroundings.moc"
