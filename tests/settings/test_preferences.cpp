#include "settings/Preferences.h"
#include "platform/ProcessSetup.h"
#include "settings/SettingsQueue.h"
#include "support/FileSizeLimit.h"
#include "support/ScratchHome.h"

#include <QProcess>
#include <QSemaphore>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString file = u".config/ai.duskrell.ostrelle.conf"_s;

// What the next start of the program will read.
Preferences written(const ScratchHome &home)
{
    settingsQueue().waitForDone();
    static int copies = 0;
    return Preferences(home.write(u"copy%1.conf"_s.arg(++copies), home.read(file)));
}

} // namespace

class TestPreferences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { prepareProcess(); }

    void keepsValues()
    {
        const ScratchHome home;
        Preferences preferences;
        QVERIFY(!preferences.contains(u"autoStartVoice"_s));
        preferences.set(u"autoStartVoice"_s, true);
        preferences.set(u"agents.customEmoji.Käfer #1"_s, u"🐞 \"=\" ;\n"_s);
        QCOMPARE(written(home).boolean(u"autoStartVoice"_s), true);
        QCOMPARE(written(home).string(u"agents.customEmoji.Käfer #1"_s), u"🐞 \"=\" ;\n"_s);
        preferences.remove(u"autoStartVoice"_s);
        QVERIFY(!written(home).contains(u"autoStartVoice"_s));
    }

    void holdsAtOnceWhileTheDiskHangs()
    {
        const ScratchHome home;
        QSemaphore disk;
        settingsQueue().start([&] { disk.acquire(); });
        Preferences().set(u"key"_s, u"first"_s);
        Preferences().set(u"key"_s, u"second"_s);
        QCOMPARE(Preferences().string(u"key"_s), u"second"_s);
        QVERIFY(!home.exists(file));
        disk.release();
        QCOMPARE(written(home).string(u"key"_s), u"second"_s);
    }

    void writesWhatWasSetJustBeforeTheEnd()
    {
        const ScratchHome home;
        QProcess::execute(QCoreApplication::applicationFilePath(), {u"--set-and-end"_s});
        QCOMPARE(written(home).string(u"key"_s), u"last"_s);
    }

    void takesOnlyTrueAndFalseForBooleans_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<std::optional<bool>>("value");
        QTest::newRow("true") << QByteArray("key=true") << std::optional(true);
        QTest::newRow("false") << QByteArray("key=false") << std::optional(false);
        QTest::newRow("number") << QByteArray("key=1") << std::optional<bool>();
        QTest::newRow("missing") << QByteArray("other=true") << std::optional<bool>();
        QTest::newRow("list") << QByteArray("key=true, false") << std::optional<bool>();
    }

    void takesOnlyTrueAndFalseForBooleans()
    {
        QFETCH(QByteArray, text);
        QFETCH(std::optional<bool>, value);
        const ScratchHome home;
        home.write(file, "[General]\n" + text + "\n");
        QCOMPARE(Preferences().boolean(u"key"_s), value);
    }

    void keepsTheOldFileWithoutRoom()
    {
        const ScratchHome home;
        Preferences().set(u"autoStartVoice"_s, true);
        settingsQueue().waitForDone();
        const QByteArray before = home.read(file);
        {
            const FileSizeLimit limit(100);
            Preferences().set(u"geminiAPIKey"_s, QString(4000, u'k'));
            settingsQueue().waitForDone();
        }
        QCOMPARE(home.read(file), before);
        QCOMPARE(QDir(home.path(u".config"_s)).entryList(QDir::Files).size(), 1);
    }

    void leavesABrokenFileAlone_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("not an INI file") << QByteArray("[unclosed\nno equals sign\n");
        QTest::newRow("huge") << QByteArray(5000000, '#');
    }

    void leavesABrokenFileAlone()
    {
        QFETCH(QByteArray, content);
        const ScratchHome home;
        home.write(file, content);
        QVERIFY(!Preferences().opens());
        Preferences().set(u"key"_s, true);
        settingsQueue().waitForDone();
        QCOMPARE(home.read(file), content);
    }
};

int main(int argc, char **argv)
{
    if (argc == 2 && QByteArrayView(argv[1]) == "--set-and-end") {
        Preferences().set(u"key"_s, u"first"_s);
        Preferences().set(u"key"_s, u"last"_s);
        std::quick_exit(EXIT_SUCCESS); // as the program ends
    }
    QCoreApplication application(argc, argv);
    TestPreferences test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_preferences.moc"
