#include "platform/FileWriting.h"
#include "platform/LoginItem.h"
#include "platform/Paths.h"
#include "platform/ProcessSetup.h"
#include "support/FileSizeLimit.h"
#include "support/PrintedLines.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QDir>
#include <QTest>

#include <sys/stat.h>
#include <thread>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { prepareProcess(); }

    // Through a link, which has to stay one: a new file, and then less than it holds, and nothing.
    void writesInPlace()
    {
        const ScratchHome home;
        home.write(u"target.new"_s, "left by a kill");
        QFile::link(home.path(u"target"_s), home.path(u"link"_s));
        for (const QByteArray &content : {QByteArray(100000, 'o'), "n"_ba, {}}) {
            QVERIFY(writeInPlace(home.path(u"link"_s), content));
            QVERIFY(QFileInfo(home.path(u"link"_s)).isSymLink());
            QCOMPARE(home.read(u"target"_s), content);
        }
    }

    void keepsTheOldContentWithoutRoom()
    {
        const ScratchHome home;
        const QByteArray before(5000, 'o');
        QVERIFY(QDir(home.path()).mkdir(u"folder"_s));
        const FileSizeLimit limit(8000);
        const QStringList files{u"file"_s, QString(250, u'l')}; // and none beside the longer one
        for (const QString &file : files) {
            const auto written = writeInPlace(home.write(file, before), QByteArray(20000, 'n'));
            QVERIFY(!written && written.error().kind == FileProblem::Kind::Failed);
            QCOMPARE(home.read(file), before);
        }
        QVERIFY(writeInPlace(home.path(files.last()), "new"_ba));
        QVERIFY(!writeInPlace(home.path(u"new"_s), QByteArray(20000, 'n')));
        QVERIFY(!writeInPlace(home.path(u"folder"_s), "new"_ba));
        QVERIFY(!replaceFile(home.path(u"folder"_s), "new"_ba));
        QVERIFY(!createAnew(home.path(u"folder"_s), "new"_ba, ownerOnly));
        QCOMPARE(QDir(home.path()).entryList(QDir::Files), files);
    }

    void closesItsFolderToOthers()
    {
        const ScratchHome home;
        const QString folder = home.path(u".ostrelle/run"_s);
        QVERIFY(QDir().mkpath(folder) && ::chmod(qPrintable(folder), 0755) == 0);
        QCOMPARE(privateHomeDirectory(), folder);
        struct stat attributes{};
        QVERIFY(::stat(qPrintable(folder), &attributes) == 0);
        QCOMPARE(attributes.st_mode & 07777, 0700U);
        QVERIFY(QDir().rmdir(folder) && QFile::link(home.path(), folder));
        QVERIFY(!privateHomeDirectory()); // the folder of somebody else, for all we know
        QVERIFY(qputenv("HOME", "/dev/null") && !privateHomeDirectory());
    }

    void finishesWhatWasCutShort_data()
    {
        const Rows<int, QByteArray> row("editedAfter", "content"); // in seconds
        row("torn", 0, "as new");
        row("torn at the last moment", 60, "as new");
        row("edited since then", 61, "torn");
        row("gone", -1, "as new");
        row("no file any more", -2, "");
    }

    void finishesWhatWasCutShort()
    {
        QFETCH(int, editedAfter);
        const ScratchHome home;
        const PrintedLines printed;
        QFile draft(home.write(u"link.unfinished"_s, "as new"));
        QFile edited(home.write(u"target"_s, "torn"));
        QVERIFY(edited.open(QFile::ReadWrite));
        const auto written = QDateTime::currentDateTime().addSecs(-100);
        QVERIFY(draft.open(QFile::ReadWrite));
        draft.setFileTime(written, QFile::FileModificationTime);
        edited.setFileTime(written.addSecs(editedAfter), QFile::FileModificationTime);
        QFile::link(edited.fileName(), home.path(u"link"_s));
        QVERIFY(editedAfter >= 0 || edited.remove());
        QVERIFY(editedAfter >= -1 || QDir().mkdir(edited.fileName()));
        for (const rlim_t room : {rlim_t{1}, RLIM_INFINITY}) { // what has none waits
            const FileSizeLimit limit(room);
            finishWriting(home.path(u"link"_s));
        }
        QTEST(home.read(u"target"_s), "content");
        QCOMPARE(printed.text().contains("Finished an interr"), home.read(u"target"_s) == "as new");
        QCOMPARE(home.exists(u"link.unfinished"_s), editedAfter < -1);
    }

    void writersTakeTurnsAndReadersSeeNoHalf()
    {
        const ScratchHome home;
        const QString file = home.write(u"file"_s, "");
        const QByteArrayList contents{QByteArray(200000, 'a'), QByteArray(100, 'b')};
        std::vector<std::jthread> writers;
        for (const QByteArray &content : contents) {
            writers.emplace_back([&file, content](const std::stop_token &stop) {
                while (!stop.stop_requested()) {
                    QVERIFY(writeInPlace(file, content));
                }
            });
        }
        for (int i = 0; i < 2000; ++i) {
            const auto read = QByteArray::fromStdString(readFile(file).value());
            QVERIFY2(read.isEmpty() || contents.contains(read), read.right(200));
        }
    }

    void readsAgainWhatIsBeingWritten()
    {
        const ScratchHome home;
        const auto isWhole = [&home](std::string_view content) {
            return content != "half" || home.write(u"file"_s, "whole").isEmpty();
        };
        QTRY_COMPARE(readWhole(home.write(u"file"_s, "half"), 100, isWhole).value(),
                     std::string("whole"));
    }

    void loginItemNamesTheInstalledProgram_data()
    {
        // named then: once the program has started
        const Rows<QString, QString, bool, QString> row("named", "running", "isEnabled",
                                                        "namedThen");
        const QString installed = u"a \"$`\\% b/ostrelle"_s;
        const QString built = u"build/bin/ostrelle"_s;
        row("all is well", installed, installed, true, installed);
        row("moved", u"gone/ostrelle"_s, installed, false, installed);
        row("of a build", built, installed, false, installed);
        row("a build runs", installed, built, true, installed);
        row("another one", u"gone/tool"_s, installed, false, u"gone/tool"_s);
        row("at another place", u"other/ostrelle"_s, installed, false, u"other/ostrelle"_s);
    }

    void loginItemNamesTheInstalledProgram()
    {
        QFETCH(QString, named);
        QFETCH(QString, running);
        QFETCH(QString, namedThen);
        const ScratchHome home;
        for (const QString &program :
             {u"a \"$`\\% b/ostrelle"_s, u"other/ostrelle"_s, u"build/bin/ostrelle"_s}) {
            home.writeScript(program, "");
        }
        home.write(u"build/CMakeCache.txt"_s, "");
        const auto entryOf = [&](const QString &program) {
            qputenv("PATH", "/nowhere");
            static_cast<void>(LoginItem(home.path(u"its entry"_s), home.path(program)).enable());
            qputenv("PATH", QFile::encodeName(home.path(u"build/bin"_s) + u':' +
                                              home.path(u"a \"$`\\% b"_s)));
            return home.read(u"its entry"_s);
        };
        LoginItem item(home.path(u"entry"_s), home.path(running));
        home.write(u"entry"_s, entryOf(named));
        QTEST(item.isEnabled(), "isEnabled");
        item.bringUpToDate();
        QCOMPARE(home.read(u"entry"_s), entryOf(namedThen));
        QVERIFY(item.enable());
        QCOMPARE(home.read(u"entry"_s), entryOf(u"a \"$`\\% b/ostrelle"_s));
        for (const char *off : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
            home.write(u"entry"_s, entryOf(u"a \"$`\\% b/ostrelle"_s) + off);
            QVERIFY(!item.isEnabled()); // the desktop has switched it off
        }
        QVERIFY(!LoginItem(home.write(u"cut"_s, "\nExec=\"\\"), home.path(running)).isEnabled());
        QVERIFY(item.disable() && !home.exists(u"entry"_s) && item.disable());
        QVERIFY(!LoginItem(home.path(u"build"_s), {}).disable()); // a folder
    }

    void refusesWhatIsNoFile_data()
    {
        const Rows<QString, FileProblem::Kind> row("path", "kind");
        row("pipe without a writer", u"pipe"_s, FileProblem::Kind::NotRegular);
        row("directory", u"."_s, FileProblem::Kind::NotRegular);
        row("missing", u"missing"_s, FileProblem::Kind::Missing);
        row("below a file", u"large/below"_s, FileProblem::Kind::Missing);
        row("too large", u"large"_s, FileProblem::Kind::TooLarge);
        row("larger than it says", u"/proc/self/status"_s, FileProblem::Kind::TooLarge);
        row("unreadable", u"/proc/self/mem"_s, FileProblem::Kind::Failed);
    }

    void refusesWhatIsNoFile()
    {
        QFETCH(QString, path);
        QFETCH(FileProblem::Kind, kind);
        const ScratchHome home;
        home.write(u"large"_s, QByteArray(1001, 'x'));
        ::mkfifo(qPrintable(home.path(u"pipe"_s)), 0600);
        const auto content = readFile(QDir(home.path()).absoluteFilePath(path), 1000);
        QVERIFY(!content);
        QCOMPARE(content.error().kind, kind);
        QVERIFY(!content.error().text.isEmpty());
        QCOMPARE(readFile(home.path(u"large"_s), 1001).value().size(), 1001U);
    }
};

QTEST_GUILESS_MAIN(TestFiles)
#include "test_files.moc"
