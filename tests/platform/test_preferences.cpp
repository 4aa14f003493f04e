#include "platform/Preferences.h"
#include "platform/ProcessSetup.h"
#include "support/FileSizeLimit.h"
#include "support/ScratchHome.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString file = u".config/ai.duskrell.ostrelle.conf"_s;

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
        QVERIFY(preferences.set(u"autoStartVoice"_s, true));
        QVERIFY(preferences.set(u"agents.customEmoji.Käfer #1"_s, u"🐞 \"=\" ;\n"_s));
        QVERIFY(home.exists(file));
        // Another object reads what this one wrote.
        QCOMPARE(Preferences().boolean(u"autoStartVoice"_s), true);
        QCOMPARE(Preferences().string(u"agents.customEmoji.Käfer #1"_s), u"🐞 \"=\" ;\n"_s);
        QVERIFY(preferences.remove(u"autoStartVoice"_s));
        QVERIFY(!Preferences().contains(u"autoStartVoice"_s));
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
        QVERIFY(Preferences().set(u"autoStartVoice"_s, true));
        const QByteArray before = home.read(file);
        {
            const FileSizeLimit limit(100);
            QVERIFY(!Preferences().set(u"geminiAPIKey"_s, QString(4000, u'k')));
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
        QVERIFY(!Preferences().set(u"key"_s, true));
        QCOMPARE(home.read(file), content);
    }
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "test_preferences.moc"
