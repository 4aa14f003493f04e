#include "platform/Log.h"

#include <QTest>

#include <algorithm>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { onlyRememberLog(); }

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
        QVERIFY(recentLogLines().first().endsWith(" line 101"));
    }
};

QTEST_APPLESS_MAIN(TestLog)
#include "test_log.moc"
