#include "platform/ProcessSetup.h"
#include "settings/SettingsQueues.h"
#include "support/FileSizeLimit.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QAbstractEventDispatcher>
#include <QProcess>
#include <QSemaphore>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QString file = u".config/ai.duskrell.ostrelle.conf"_s;

const TextPreference key{u"key"_s};

// What the next start of the program will read.
std::shared_ptr<Preferences> written(const ScratchHome &home)
{
    settingsQueue().waitForDone();
    return home.settings().preferences;
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
        const auto preferences = home.settings().preferences;
        const TextPreference emoji = preference::customAgentEmoji(u"Käfer/#1"_s);
        QVERIFY(preferences->opens() && !preferences->contains(preference::autoStartVoice.key));
        preferences->set(preference::autoStartVoice, true);
        preferences->set(emoji, u"🐞 \"=\" ;\n"_s);
        preferences->set(preference::customAgentEmoji(u"Käfer//#1"_s), u"another's"_s);
        QVERIFY(written(home)->value(preference::autoStartVoice));
        QVERIFY(preferences->contains(preference::autoStartVoice.key));
        QCOMPARE(written(home)->value(emoji), u"🐞 \"=\" ;\n"_s);
        preferences->remove(emoji);
        QCOMPARE(preferences->value(emoji) + written(home)->value(emoji), QString());
    }

    void holdsAtOnceWhileTheDiskHangs()
    {
        const ScratchHome home;
        const auto preferences = home.settings().preferences;
        QSemaphore disk;
        settingsQueue().start([&] { disk.acquire(); });
        preferences->set(key, u"first"_s);
        preferences->set(key, u"second"_s);
        QCOMPARE(preferences->value(key), u"second"_s);
        QVERIFY(!home.exists(file));
        disk.release();
        for (int i = 0; i < 100'000 && !home.exists(file + u".new"_s); ++i) {
            preferences->set(key, QString::number(i));
        }
        preferences->set(key, u"while it is being written"_s);
        QCOMPARE(written(home)->value(key), u"while it is being written"_s);
    }

    void writesWhatWasSetJustBeforeTheEnd()
    {
        const ScratchHome home;
        QProcess::execute(QCoreApplication::applicationFilePath(), {u"--set-and-end"_s});
        QCOMPARE(written(home)->value(key), u"last"_s);
    }

    void takesOnlyTrueAndFalseForBooleans_data()
    {
        // values: where true and where false holds otherwise
        const Rows<QByteArray, QByteArray> row("text", "values");
        row("true", "key=true", "11");
        row("false", "key=false", "00");
        row("number", "key=1", "10");
        row("list", "key=true, false", "10");
    }

    void takesOnlyTrueAndFalseForBooleans()
    {
        QFETCH(QByteArray, text);
        const ScratchHome home;
        home.write(file, "; by hand\r\n[General]\r\n" + text + "\n");
        QByteArray values;
        for (const bool otherwise : {true, false}) {
            values += QByteArray::number(
                home.settings().preferences->value(BooleanPreference{"key"_L1, otherwise}));
        }
        QTEST(values, "values");
    }

    void keepsTheOldFileWithoutRoom()
    {
        const ScratchHome home;
        const auto preferences = home.settings().preferences;
        QFile left(home.write(file + u".written17"_s, "of a run that was killed"));
        QVERIFY(left.open(QFile::ReadWrite) &&
                left.setFileTime(QDateTime::currentDateTime().addSecs(-70),
                                 QFile::FileModificationTime));
        preferences->set(preference::autoStartVoice, true);
        QVERIFY(preferences->stored().result()); // and nothing is left
        const QByteArray before = home.read(file);
        {
            const FileSizeLimit limit(100);
            preferences->set(key, QString(4000, u'k'));
            QVERIFY(!preferences->stored().result());
            QVERIFY(!preferences->stored().result());
            QCoreApplication::processEvents();
            // One timer, however many attempts have failed.
            QCOMPARE(QAbstractEventDispatcher::instance()->children().size(), 1);
        }
        QCOMPARE(home.read(file), before);
        QCOMPARE(QDir(home.path(u".config"_s)).entryList(QDir::Files).size(), 1);
        QVERIFY(preferences->stored().result()); // now what did not fit, too
        QCOMPARE(written(home)->value(key).size(), 4000);
    }

    void triesAgainUntilThereIsRoom()
    {
        const ScratchHome home;
        QVERIFY(QDir().mkpath(home.path(u".config"_s)));
        const auto preferences = std::make_shared<Preferences>(home.path(file), 1ms);
        const auto lastAttempt = [&] { return QFileInfo(home.path(u".config"_s)).lastModified(); };
        {
            const FileSizeLimit limit(100);
            preferences->set(key, QString(4000, u'k'));
            for (int attempt = 0; attempt < 4; ++attempt) { // each has a draft, made and removed
                const QDateTime before = lastAttempt();
                QTRY_VERIFY(lastAttempt() != before);
            }
        }
        QTRY_COMPARE(written(home)->value(key).size(), 4000);
    }

    void leavesABrokenFileAlone_data()
    {
        const Rows<QByteArray> row("content");
        row("not an INI file", "[unclosed\nno equals sign\n");
        row("only the section is wrong", "[unclosed=\nkey=old\n");
        row("text behind the section", "[General] text\nkey=old\n");
        row("huge", QByteArray(5000000, ';'));
    }

    void leavesABrokenFileAlone()
    {
        QFETCH(QByteArray, content);
        const ScratchHome home;
        home.write(file, content);
        const auto preferences = home.settings().preferences;
        QVERIFY(!preferences->opens());
        preferences->set(key, u"new"_s);
        QVERIFY(!preferences->stored().result());
        QCOMPARE(home.read(file), content);
    }
};

int main(int argc, char **argv)
{
    if (argc == 2 && QByteArrayView(argv[1]) == "--set-and-end") {
        const auto preferences = Settings().preferences;
        preferences->set(key, u"first"_s);
        preferences->set(key, u"last"_s);
        std::quick_exit(EXIT_SUCCESS); // as the program ends
    }
    QCoreApplication application(argc, argv);
    TestPreferences test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_preferences.moc"
