#include "platform/Files.h"
#include "statusserver/BackwardLines.h"
#include "statusserver/ServerFixture.h"
#include "statusserver/SessionDigest.h"
#include "statusserver/SessionLog.h"
#include "support/Rows.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringDecoder>
#include <QTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

// The plain way: the whole log in memory, from its first line to its last, with another parser.
QByteArray digestForwards(const QByteArray &log, qsizetype limit)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QJsonArray records;
    const QString text = decoder.decode(log);
    for (const QByteArray &line : decoder.hasError() ? QList<QByteArray>() : log.split('\n')) {
        const QJsonValue entry = QJsonDocument::fromJson(line).object();
        const QString role = entry["message"_L1]["role"_L1].toString();
        const QString content = entry["message"_L1]["content"_L1].toString().trimmed();
        if (entry["type"_L1] == "message"_L1 && (role == "user"_L1 || role == "assistant"_L1) &&
            !content.isEmpty()) {
            records.append(QJsonObject{{"role"_L1, role},
                                       {"content"_L1, content},
                                       {"timestamp"_L1, entry["timestamp"_L1].toString()}});
        }
    }
    while (records.size() > limit) {
        records.removeFirst();
    }
    return R"({"messages":)" + QJsonDocument(records).toJson(QJsonDocument::Compact) +
           R"(,"count":)" + QByteArray::number(records.size()) + "}";
}

} // namespace

class TestDigest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lineRules_data()
    {
        // content: empty where the line does not count
        const Rows<QByteArray, QString> row("line", "content");
        const auto content = [&](const char *name, const QByteArray &json,
                                 const QString &text = {}) {
            row(name, R"({"type":"message","message":{"role":"user","content":)" + json + "}}",
                text);
        };
        content("trimmed of every white space", "\"\\u2003\\u00a0\\n hello\\r\\n\\t \"",
                u"hello"_s);
        content("only white space", R"(" \n ")");
        content("parts",
                R"([{"type":"text","text":"a"},{"type":"","text":"c"},{"type":"text","text":"b"}])",
                u"a\nb"_s);
        content("part without text", R"([{"type":"text","text":7},{"type":"text","text":"b"}])",
                u"b"_s);
        content("part that is no object", R"([{"type":"text","text":"a"},"b"])");
        content("heartbeat prompt", R"("Now: Read HEARTBEAT.md if it exists, then")");
        content("heartbeat reply", R"("\n HEARTBEAT_OK ")");
        content("heartbeat reply inside a text", R"("HEARTBEAT_OK then")", u"HEARTBEAT_OK then"_s);
        content("no reply", R"("NO_REPLY")");
        content("half of a surrogate pair", R"("\udc00")", u"\ufffd"_s);
        content("broken behind the text", R"("hello"},"x":tru)");
        row("role of a tool", R"({"type":"message","message":{"role":"tool","content":"a"}})", {});
        row("another type", R"({"type":"session","message":{"role":"user","content":"a"}})", {});
        row("no object", "[1]", {});
        row("type escaped, line indented",
            " {\"ty\\u0070e\":\"message\",\"message\":{\"role\":\"user\",\"content\":"
            "\"a\"}}\r",
            u"a"_s);
    }

    void lineRules()
    {
        QFETCH(const QByteArray, line);
        QFETCH(const QString, content);
        const QJsonObject answer =
            QJsonDocument::fromJson(digest(line + "\n" + messageLine("next"), 9, 64)).object();
        const QJsonArray messages = answer["messages"_L1].toArray();
        QCOMPARE(messages.last()["content"_L1], u"next"_s);
        QCOMPARE(messages.first()["content"_L1], content.isEmpty() ? u"next"_s : content);
        QCOMPARE(answer["count"_L1], messages.size());
    }

    void equalsForwardReading_data()
    {
        const Rows<QByteArray> row("log");
        const QByteArray three = messageLine("one") +
                                 messageLine("zw\u00f6lf \U0001F9AA", "assistant") + "garbage\n\n" +
                                 messageLine("drei \u2026");
        row("empty", {});
        row("lines of many lengths", three);
        row("last line unfinished", three.chopped(1));
        row("ends in two bytes", three + "\u00e9");
        row("ends in three bytes", three + "\u0e01");
        row("cut inside a character", three + "\xF0\x9F\xA6");
        row("bad byte at the start", "\xff" + three);
        row("overlong sequence in the middle", messageLine("one") + "\xC0\x80" + three);
    }

    void equalsForwardReading()
    {
        QFETCH(const QByteArray, log);
        for (std::size_t block = 1; block <= static_cast<std::size_t>(log.size()) + 2; ++block) {
            for (const int limit : {0, 1, 2, 50}) {
                QCOMPARE(digest(log, limit, block), digestForwards(log, limit));
            }
        }
    }

    void longLinesDoNotCount()
    {
        const QByteArray line = messageLine("a line of some length");
        const auto length = static_cast<std::size_t>(line.size()) - 1;
        const QByteArray log = line + messageLine("x") + line + messageLine("y") + line;
        for (std::size_t block = 1; block < 3 * length; ++block) {
            QCOMPARE(digest(log, 9, block, length), digestForwards(log, 9));
            QCOMPARE(digest(log, 9, block, length - 1),
                     digestForwards(messageLine("x") + messageLine("y"), 9));
        }
    }

    void aLongLineFillsNoMemory()
    {
        const QString path = m_home.write(u"long.jsonl"_s, {});
        QVERIFY(QFile::resize(path, 20'000'000)); // without a block on the disk
        const auto file = openRegular(path.toStdString());
        rusage before{};
        rusage after{};
        ::getrusage(RUSAGE_SELF, &before);
        QVERIFY(digestSessionLog(file->descriptor.get(), {.maxLineBytes = 100'000}, {}).empty());
        ::getrusage(RUSAGE_SELF, &after);
        QVERIFY(after.ru_maxrss - before.ru_maxrss < 10'000); // kilobytes
    }

    void byteOrderMarkStays()
    {
        const QByteArray text = "\xEF\xBB\xBFhello";
        QVERIFY(digest(messageLine(text), 9, 64).contains('"' + text + '"'));
    }

    void textIsBounded()
    {
        const QByteArray log = messageLine("1") + messageLine("two") + messageLine("3");
        const auto file = openRegular(m_home.write(u"bounded.jsonl"_s, log).toStdString());
        const auto count = [&](qsizetype units) { // a record's text and its timestamp of one unit
            return digestSessionLog(file->descriptor.get(), {.maxTextUnits = units}, {}).size();
        };
        QCOMPARE(count(6), 2U);
        QCOMPARE(count(5), 1U); // the short one before is not taken instead
        QCOMPARE(count(1), 0U);
    }

    void survivesTruncation()
    {
        const QByteArray log = messageLine("one").repeated(100);
        const QString path = m_home.write(u"cut.jsonl"_s, log);
        const auto file = openRegular(path.toStdString());
        BackwardLines lines(file->descriptor.get(), log.size(), {64, 8192}, {});
        QVERIFY(lines.next() && QFile::resize(path, 10));
        while (lines.next()) {
        }
        QVERIFY(lines.failed());
    }

    void newestLog()
    {
        qint64 seconds = 1'000'000;
        for (const QString &name :
             {u"old.jsonl"_s, u"new.jsonl"_s, u"first.jsonl"_s, u"a.deleted.jsonl"_s,
              u"a.reset.1.jsonl"_s, u"a.jsonl.lock.jsonl"_s, u"a.json"_s}) {
            const QByteArray file = m_home.write(u"logs/"_s + name, "x").toUtf8();
            const timespec time{.tv_sec = name[0] == u'f' ? 1 : ++seconds, .tv_nsec = 0};
            const timespec times[] = {time, time};
            QCOMPARE(::utimensat(AT_FDCWD, file.constData(), times, 0), 0);
        }
        QFile::link(u"nowhere"_s, m_home.path(u"logs/dangling.jsonl"_s));
        const auto newest = newestSessionLog(m_home.path(u"logs"_s).toStdString());
        QCOMPARE(newest.value_or(""), m_home.path(u"logs/new.jsonl"_s).toStdString());
        QVERIFY(!newestSessionLog(m_home.path(u"missing"_s).toStdString()));
    }

private:
    QByteArray digest(const QByteArray &log, int limit, std::size_t blockBytes,
                      std::size_t maxLineBytes = 8192)
    {
        if (m_written != log || log.isEmpty()) {
            m_home.write(u"log.jsonl"_s, log);
            m_written = log;
        }
        const auto file = openRegular(m_home.path(u"log.jsonl"_s).toStdString());
        return QByteArray::fromStdString(historyBody(digestSessionLog(
            file->descriptor.get(), {limit, blockBytes, maxLineBytes}, std::stop_token())));
    }

    ScratchHome m_home;
    QByteArray m_written; // what the log file holds
};

QTEST_GUILESS_MAIN(TestDigest)

#include "test_digest.moc"
