#include "platform/Log.h"
#include "platform/OutputPipe.h"
#include "platform/ProcessSetup.h"

#include <QTest>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

using namespace ostrelle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class TestLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Nobody reads for a while, and then never again.
    void countsWhatNobodyTook()
    {
        prepareProcess();
        ::close(STDIN_FILENO); // whose number the pipe gets
        auto pipe = OutputPipe::open();
        const Descriptor output(::dup(STDOUT_FILENO));
        ::fcntl(pipe->writeEnd(), F_SETFL, O_NONBLOCK);
        ::dup2(pipe->writeEnd(), STDOUT_FILENO);
        for (int i = 0; i < 1000; ++i) {
            logLine(QString(5000, u'x'));
        }
        QByteArray taken;
        const auto take = [&] {
            taken += pipe->read();
            return finishLog(0ms);
        };
        const bool isTaken = QTest::qWaitFor(take) && take();
        pipe.reset();
        logLine(u"gone"_s);
        const bool isFinished = finishLog(5s);
        ::dup2(output.get(), STDOUT_FILENO);
        onlyRememberLog();
        QVERIFY(isTaken && isFinished && taken.count('\n') > 512 && taken.count('\n') < 1000);
        QVERIFY(taken.contains(" lines were dropped: nobody took them\n"));
        QCOMPARE(::fcntl(STDIN_FILENO, F_GETFD), -1); // closed with the pipe
    }

    void repeatsALibrarysWarningOnlyAfterMuchElse()
    {
        const auto before = qInstallMessageHandler(nullptr);
        logMessagesOfLibraries();
        const auto warnings = [](int others) {
            for (int i = 0; i < others; ++i) {
                qWarning("another %d", i);
            }
            qWarning("no prompt");
            return std::ranges::count_if(recentLogLines(), [](const QByteArray &line) {
                return line.endsWith("no prompt");
            });
        };
        const QList<qsizetype> told{warnings(0), warnings(0), warnings(63), warnings(64)};
        qInstallMessageHandler(before);
        QCOMPARE(told, (QList<qsizetype>{1, 1, 1, 2}));
    }

    // For a bug report: of a flood the last lines, and of a long one its beginning.
    void remembersWhatWasToldLast()
    {
        logLine(QString(2000, u'x'));
        QVERIFY(recentLogLines().last().endsWith("xx") && recentLogLines().last().size() < 1020);
        for (int i = 1; i <= 300; ++i) {
            logLine(u"line %1"_s.arg(i));
        }
        QCOMPARE(recentLogLines().size(), 200);
        QVERIFY(recentLogLines().first().endsWith(" line 101") && finishLog(0ms)); // silently
    }
};

QTEST_APPLESS_MAIN(TestLog)
#include "test_log.moc"
