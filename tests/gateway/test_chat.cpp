#include "core/BackgroundWork.h"
#include "gateway/QuickChatVM.h"
#include "gateway/StandInGateway.h"
#include "settings/OstrelleConfig.h"
#include "support/Patience.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QByteArray path = "/v1/chat/completions";

QByteArray completion(const QByteArray &content)
{
    return R"({"choices":[{"message":{"content":)" + content + "}}]}";
}

} // namespace

class TestChat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.token = u"of the configured gateway"_s;
        config.save();
    }

    void cleanup() { QVERIFY(finishBackgroundWork(10s)); }

    void showsTheReply_data()
    {
        const Rows<QByteArray, QString> row("body", "text");
        const auto raw = [&](const char *name, const QByteArray &body) {
            row(name, body, QString::fromUtf8(body));
        };
        row("reply", completion(R"("Grüße\n\"du\" 💬 ")"), u"Grüße\n\"du\" 💬 "_s);
        raw("no choices", R"({"choices":[]})");
        raw("second choice is a text", completion(R"("a")").replace("}]", "},\"b\"]"));
        raw("text with line ends", "\n plain \n");
        row("lone surrogate, number beyond 64 bits",
            completion(R"("\ud83d!"},"n":{"n":123456789012345678901234567890)"), u"\ufffd!"_s);
        row("not UTF-8", "\xff\xfe", u"No response"_s);
        row("100 MB", completion('"' + QByteArray(100000000, 'x') + '"'),
            u"Error: The reply is too long."_s);
    }

    void showsTheReply()
    {
        QFETCH(QByteArray, body);
        StandInGateway gateway;
        gateway.answer(path, StandInGateway::response(201, body));
        QuickChatVM chat(m_home.settings().tokens);
        QTEST(replyOf(chat, gateway.url()), "text");
    }

    void asksInTheGatewaysWords()
    {
        StandInGateway gateway;
        QuickChatVM chat(m_home.settings().tokens);
        QCOMPARE(replyOf(chat, gateway.url(), u" say \"hi\"\nto me\n"_s), u"Gateway error"_s);
        QCOMPARE(chat.messages()->messages().first(),
                 (ChatMessage{.role = u"user"_s, .text = u"say \"hi\"\nto me"_s}));
        // It gets to see no other gateway's token.
        QVERIFY(gateway.requests(path).first().contains("\r\nAuthorization: Bearer \r\n"));

        m_home.storeToken(u"s3cret\n"_s, gateway.url());
        replyOf(chat, gateway.url(), u"say \"hi\"\nto me"_s);
        const QByteArray request = gateway.requests(path).last();
        QVERIFY(request.startsWith("POST "));
        for (const char *header :
             {"Authorization: Bearer s3cret", "Content-Type: application/json",
              "x-duskrell-session-key: agent:main:main", "x-duskrell-channel: ostrelle"}) {
            QVERIFY2(request.contains("\r\n" + QByteArray(header) + "\r\n"), header);
        }
        const QJsonArray messages{
            QJsonObject{{"role"_L1, "system"_L1},
                        {"content"_L1, u"Reply concisely — 1-3 sentences max. You're responding in "
                                       u"a tiny chat widget."_s}},
            QJsonObject{{"role"_L1, "user"_L1}, {"content"_L1, u"💬 say \"hi\"\nto me"_s}}};
        const QByteArray body = request.sliced(request.indexOf("\r\n\r\n") + 4);
        QCOMPARE(QJsonDocument::fromJson(body).object(), (QJsonObject{{"model"_L1, "duskrell"_L1},
                                                                      {"messages"_L1, messages},
                                                                      {"stream"_L1, false},
                                                                      {"max_tokens"_L1, 200}}));
    }

    void failuresAreReplies_data()
    {
        const Rows<QString, QString> row("url", "text");
        row("no URL", u"http://two words"_s, u"Invalid gateway URL"_s);
        row("no host", u""_s, u"Error: Unsupported URL."_s);
        row("nobody there", u"http://127.0.0.1:1"_s, u"Error: Connection refused"_s);
        row("black hole", u"hole"_s, u"Error: The request timed out."_s);
    }

    void failuresAreReplies()
    {
        QFETCH(QString, url);
        StandInGateway gateway;
        gateway.answer(path, {});
        QuickChatVM chat(m_home.settings().tokens, url == "hole"_L1 ? 200ms : 120s);
        QTEST(replyOf(chat, url == "hole"_L1 ? gateway.url() : url), "text");
    }

    void keepsSixMessages()
    {
        StandInGateway gateway;
        gateway.answer(path, StandInGateway::response(200, "ok"));
        QuickChatVM chat(m_home.settings().tokens);
        const QAbstractItemModelTester tester(chat.messages());
        for (const QString &question : {u"1"_s, u"2"_s, u"3"_s, u"4"_s}) {
            replyOf(chat, gateway.url(), question);
        }
        QCOMPARE(chat.messages()->rowCount(), 6);
        QCOMPARE(chat.messages()->messages().first().text, u"2"_s);
        const QModelIndex last = chat.messages()->index(5);
        QCOMPARE(last.data(ChatMessages::RoleRole), u"assistant"_s);
        QCOMPARE(last.data(ChatMessages::TextRole), u"ok"_s);
        QCOMPARE(replyOf(chat, gateway.url(), u" \n"_s), u"ok"_s); // nothing was asked
        chat.setInput(u"5"_s);
        chat.send(gateway.url());
        chat.setInput(u"6"_s);
        chat.send(gateway.url());
        QCOMPARE(chat.input(), u"6"_s); // one at a time
    }

private:
    static QString replyOf(QuickChatVM &chat, const QString &url, const QString &question = u"?"_s)
    {
        chat.setInput(question);
        chat.send(url);
        return QTest::qWaitFor([&] { return !chat.isLoading(); }, patienceMilliseconds)
                   ? chat.messages()->messages().last().text
                   : u"still waiting"_s;
    }

    const ScratchHome m_home;
};

QTEST_GUILESS_MAIN(TestChat)
#include "test_chat.moc"
