#include "session/SecretService.h"
#include "settings/PreferredSecretStore.h"
#include "settings/SecretFile.h"
#include "support/PrintedLines.h"
#include "support/PrivateSession.h"
#include "support/Processes.h"
#include "support/ScratchHome.h"

#include <QLibrary>
#include <QTest>

#include <thread>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString gateway = u"http://127.0.0.1:18789"_s;
const QString account = u"gateway-token:"_s + gateway;
const QString keyrings = u"/org/freedesktop/secrets"_s;
const QString login = keyrings + u"/collection/login"_s;

// What a call came to, in a form that a failing comparison can print.
QString outcome(const std::expected<std::optional<QByteArray>, SecretProblem> &answer)
{
    if (!answer) {
        return toString(answer.error());
    }
    return *answer ? u'"' + QString::fromUtf8(**answer) + u'"' : u"nothing"_s;
}

void verifyKeepsSecrets(SecretStore &store)
{
    QCOMPARE(outcome(store.read(account)), u"nothing"_s);
    QVERIFY(store.write(account, "first"));
    QVERIFY(store.write(account, "second – ключ"));
    QVERIFY(store.write(account + u'/', "another account"));
    QCOMPARE(outcome(store.read(account)), u"\"second – ключ\""_s);
    QVERIFY(store.write(account + u"empty"_s, ""));
    QCOMPARE(outcome(store.read(account + u"empty"_s)), u"\"\""_s);
    QCOMPARE(outcome(store.read(account + u'/')), u"\"another account\""_s);
}

// With another program than ours.
QByteArray ask(const QString &object, const QString &method, const QStringList &arguments = {})
{
    return outputOf(u"gdbus"_s,
                    QStringList{u"call"_s, u"--session"_s, u"--dest=org.freedesktop.secrets"_s,
                                u"--object-path="_s + object,
                                u"--method=org.freedesktop.Secret."_s + method} +
                        arguments);
}

qsizetype itemsInKeyring()
{
    const QByteArray items =
        ask(keyrings, u"Service.SearchItems"_s,
            {u"{'service':'ai.duskrell.ostrelle','account':'%1'}"_s.arg(account)});
    return items.count("/org/freedesktop/secrets/collection/");
}

} // namespace

class TestSecrets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // One bus for all, because GLib keeps one connection to it for the whole process.
    void initTestCase() { m_session = std::make_unique<PrivateSession>(); }

    void cleanup()
    {
        if (m_keyring) {
            endKeyring();
        }
    }

    void keepsSecretsInAFile()
    {
        const QString path = m_home.path(u"secrets.json"_s);
        const QFile::Permissions ownersOnly(0x6600);
        SecretFile file(path);
        verifyKeepsSecrets(file);
        QCOMPARE(QFile::permissions(path), ownersOnly);
        QVERIFY(QFile::setPermissions(path, QFile::Permissions(0x6644)));
        QVERIFY(file.write(account, "closed"));
        QCOMPARE(QFile::permissions(path), ownersOnly);

        m_home.write(u"secrets.json"_s, "broken {");
        QCOMPARE(outcome(file.read(account)), toString(SecretProblem::Refused));
        QVERIFY(file.write(account, "new"));
        QCOMPARE(outcome(file.read(account)), u"\"new\""_s);
        m_home.write(u"secrets.json"_s, "broken again");
        QVERIFY(file.write(account, "newer"));
        QCOMPARE(m_home.read(u"secrets.json.broken"_s), "broken {");
        QCOMPARE(m_home.read(u"secrets.json.broken-2"_s), "broken again");
        m_home.write(u"secrets.json"_s, QByteArray(5'000'000, ' ') + "{}"); // nobody's secrets
        QVERIFY(!file.write(account, "newest"));
        QVERIFY(!SecretFile(u"/proc/secrets.json"_s).write(account, "nowhere"));
    }

    void keepsSecretsInAKeyring()
    {
        m_keyring = &m_session->startKeyring();
        verifyKeepsSecrets(m_service);

        // Another tool may have made some, with attributes of its own.
        const QString others = u"for i in 1 2 3 4; do echo x | secret-tool store --label=x service "
                               "ai.duskrell.ostrelle account '%1' more $i; done"_s.arg(account);
        outputOf(u"/bin/sh"_s, {u"-c"_s, others});
        QCOMPARE(itemsInKeyring(), 5);
        QVERIFY(m_service.write(account, "two"));
        QCOMPARE(outcome(m_service.read(account)), u"\"two\""_s);
        QCOMPARE(itemsInKeyring(), 1);
    }

    void followsTheServiceAsItComesAndGoes()
    {
        const PrintedLines printed;
        QCOMPARE(outcome(m_service.read(account)), toString(SecretProblem::Unreachable));
        QVERIFY(m_preferred.write(account, "without a service"));
        QCOMPARE(m_preferred.whereKept(), m_home.path(keptIn));
        QCOMPARE(PreferredSecretStore(m_home.path(keptIn)).whereKept(), m_home.path(keptIn));

        m_keyring = &m_session->startKeyring();
        QCOMPARE(outcome(m_preferred.read(account)), u"\"without a service\""_s);
        QCOMPARE(outcome(m_service.read(account)), u"\"without a service\""_s); // it has moved
        QCOMPARE(m_home.read(keptIn).simplified(), R"({ "usesSecretService": true })");
        QCOMPARE(m_preferred.whereKept(), u"the desktop's Secret Service"_s);
        QVERIFY(PreferredSecretStore(m_home.path(u"other"_s)).write(account, "with a service"));
        QCOMPARE(m_home.read(u"other"_s).simplified(), R"({ "usesSecretService": true })");
        QCOMPARE(outcome(m_preferred.read(account)), u"\"with a service\""_s);
        QCOMPARE(itemsInKeyring(), 1);

        endKeyring();
        // Also in the next run nobody says that there is none.
        PreferredSecretStore nextRun(m_home.path(keptIn));
        QCOMPARE(nextRun.whereKept(), u"the desktop's Secret Service"_s);
        QCOMPARE(outcome(nextRun.read(account)), toString(SecretProblem::NoAnswer));
        QVERIFY(QFile::remove(m_home.path(keptIn)));
        QList<qsizetype> open;
        for (int start = 0; start < 5; ++start) {
            m_keyring = &m_session->startKeyring();
            QCOMPARE(outcome(nextRun.read(account)), u"\"with a service\""_s);
            endKeyring();
            open.append(openDescriptors());
        }
        QCOMPARE(open.last(), open[1]);
        QVERIFY(m_home.read(keptIn).contains("true")); // as the file says again
        QCOMPARE(printed.text().count("No Secret Service; secrets are kept in /"), 1);
        QCOMPARE(printed.text().count("Secrets are kept in the desktop's Secret Service\n"), 3);
    }

    void moveToTheKeyringLosesNothingNewer()
    {
        m_keyring = &m_session->startKeyring();
        m_home.write(keptIn, "broken {");
        QVERIFY(m_preferred.write(account, "where no file is needed"));
        QVERIFY(SecretFile(m_home.path(keptIn)).write(account, "kept"));
        m_home.write(keptIn + u".new/in/it"_s, {});
        QVERIFY(!m_preferred.write(account, "where an older one stays"));
        QVERIFY(QDir(m_home.path(keptIn + u".new"_s)).removeRecursively());
        QCOMPARE(outcome(m_preferred.read(account + u'/')), u"\"another account\""_s);
        QTRY_COMPARE(outcome(m_service.read(account)), u"\"kept\""_s);
        for (int i = 0; i < 30; ++i) {
            const QByteArray newer = "new " + QByteArray::number(i);
            QVERIFY(SecretFile(m_home.path(keptIn)).write(account, "old"));
            const std::jthread reader(
                [this] { static_cast<void>(m_preferred.read(account)); }); // which moves it
            QVERIFY(m_preferred.write(account, newer));
            QTRY_VERIFY(!m_home.read(keptIn).contains(account.toUtf8()));
            QCOMPARE(outcome(m_service.read(account)), u'"' + QString::fromUtf8(newer) + u'"');
        }
        ask(login, u"Collection.Delete"_s);
        QVERIFY(m_preferred.write(account, "without a keyring"));
        QVERIFY(m_home.read(keptIn).contains("without a keyring"));
        m_preferred.unlockForUser(); // where nothing is locked
    }

    // The prompter is the one that the keyring's own library has for tests. It takes a prompt that
    // nobody expects as an error, and the keyring then stays locked.
    void asksForAPasswordWhenTheUserSaves()
    {
        QLibrary library(u"gcr-base-3"_s, 1);
        QVERIFY(library.load());
        const auto function = [&](const char *name) { return library.resolve(name); };
        using Start = const char *();
        using ExpectPassword = void(const char *password, const char *endOfProperties);
        qputenv("GNOME_KEYRING_TEST_PROMPTER",
                reinterpret_cast<Start *>(function("gcr_mock_prompter_start"))());
        const auto expectPassword =
            reinterpret_cast<ExpectPassword *>(function("gcr_mock_prompter_expect_password_ok"));

        m_keyring = &m_session->startKeyring();
        const Settings settings = m_home.settings();
        const auto save = [&](const QString &token) {
            const Tokens::Saved saved = settings.tokens->saveForUser(gateway, token).result();
            return saved ? u"saved"_s : toString(saved.error());
        };
        ask(keyrings, u"Service.Lock"_s, {u"['"_s + login + u"']"_s}); // with nothing in it
        expectPassword("test password", nullptr);
        QCOMPARE(save(u"one"_s), u"saved"_s);
        const Settings reader = m_home.settings();
        QCOMPARE(reader.tokens->getToken(gateway), u"one"_s);
        ask(keyrings, u"Service.Lock"_s, {u"['"_s + login + u"']"_s});
        QCOMPARE(outcome(m_service.read(account)), toString(SecretProblem::Locked));
        QCOMPARE(settings.tokens->getToken(gateway), u"one"_s); // remembered
        QCOMPARE(reader.tokens->getToken(gateway), u"one"_s);
        function("gcr_mock_prompter_expect_close")();
        expectPassword("test password", nullptr); // not at once: the answer was no
        QCOMPARE(save(u"three"_s), toString(SecretProblem::Locked));
        QCOMPARE(save(u"four"_s), u"saved"_s);
        QCOMPARE(outcome(m_service.read(account)), u"\"four\""_s);
    }

    // Last: no other bus can be reached from this process afterwards.
    void outlivesTheBus()
    {
        m_session->endBus();
        QVERIFY(m_preferred.write(account, "after the session"));
        QCOMPARE(outcome(m_preferred.read(account)), u"\"after the session\""_s);
        QVERIFY(m_home.read(keptIn).contains("after the session"));
        QCOMPARE(outcome(m_service.read(account)), toString(SecretProblem::Unreachable));
    }

private:
    void endKeyring()
    {
        m_keyring->terminate();
        m_keyring->waitForFinished();
        m_keyring = nullptr;
    }

    const QString keptIn = u".ostrelle/secrets.json"_s;
    ScratchHome m_home;
    SecretService m_service;
    PreferredSecretStore m_preferred{m_home.path(keptIn)};
    std::unique_ptr<PrivateSession> m_session;
    QProcess *m_keyring = nullptr;
};

QTEST_GUILESS_MAIN(TestSecrets)
#include "test_secrets.moc"
