#include "gateway/LanAddress.h"
#include "gateway/NetworkHelpers.h"
#include "gateway/Scripts.h"
#include "support/Rows.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestNetwork : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void argumentsArriveAsTheyAre()
    {
        const QStringList arguments{u"it's"_s,          u""_s,           u"a b"_s,
                                    u"$HOME `id` \\"_s, u"two\nlines"_s, u"'"_s};
        QCOMPARE(
            NetworkHelpers::runProcess(u"/usr/bin/printf"_s, QStringList(u"[%s]"_s) + arguments),
            u"[it's][][a b][$HOME `id` \\][two\nlines][']"_s);
        QVERIFY(NetworkHelpers::runProcess(u"/usr/bin/env"_s, {})
                    .contains(u"__CFBundleIdentifier=\n"_s));
    }

    void findsTheToolWhereUsersHaveIt()
    {
        const TailscalePlaces nowhere{.tools = {}, .application = {}, .applicationTool = {}};
        m_home.writeScript(u".nvm/versions/node/v10.1.0/bin/tailscale"_s, {});
        m_home.writeScript(u".nvm/versions/node/v20.0.0/bin/tailscale"_s, {});
        QVERIFY(NetworkHelpers::isTailscaleInstalled(nowhere));
        const QString tool = NetworkHelpers::tailscaleCLI(nowhere);
        QVERIFY(tool.endsWith("/bin/tailscale"_L1) && !tool.contains("/v10"_L1)); // the newest
    }

    void readsAddressAndServeLine_data()
    {
        const Rows<QByteArray, QString, QString> row("printed", "address", "serve");
        row("blank lines", " \n\n", {}, {});
        row("first of two lines, text behind it",
            "# x\n\t\t https://a.ts.net (tailnet only) \r\t\nhttps://b",
            u"# x\n\t\t https://a.ts.net (tailnet only) \r\t\nhttps://b"_s,
            u"https://a.ts.net (tailnet only) \r"_s);
    }

    void readsAddressAndServeLine()
    {
        QFETCH(QByteArray, printed);
        m_home.write(u"tailscale-ip"_s, printed);
        m_home.write(u"tailscale-serve"_s, printed);
        QTEST(NetworkHelpers::getTailscaleIP(m_tailscale).value_or(QString()), "address");
        QTEST(NetworkHelpers::getTailscaleServeURL(m_tailscale).value_or(QString()), "serve");
    }

    void readsStatus_data()
    {
        const Rows<QByteArray, QString, QStringList> row("status", "self", "peers");
        const QByteArray ips = R"("TailscaleIPs":["fd7a::1","100.1.1.1","100.1.1.2"]},)";
        const QByteArray on = R"({"Online":true,)";

        row("not logged in", "Logged out.\n", {}, {});
        row("no dot, twice", R"({"Self":{"DNSName":"b","DNSName":"a.ts.net"}})", u"a.ts.net"_s, {});
        row("two dots", R"({"Self":{"DNSName":"a.."}})", u"a."_s, {});
        row("nameless, peers in a list", R"({"Self":{"DNSName":"."},"Peer":[]})", {}, {});
        row("in document order, odd ones left out",
            R"({"Peer":{"z":)" + on + R"("DNSName":"z",)" + ips + R"("b":7,)" +
                R"("c":{"Online":false,"DNSName":"c",)" + ips + R"("d":{"DNSName":"d",)" + ips +
                R"("e":{"Online":1,"DNSName":"e",)" + ips + R"("f":)" + on + ips + R"("g":)" + on +
                R"("DNSName":"g","TailscaleIPs":["fd7a::2"]},"h":)" + on +
                R"("DNSName":"h","TailscaleIPs":["100.1.1.9",5]},"a":)" + on + R"("DNSName":"a",)" +
                ips.chopped(1) + "}}",
            {}, {u"z 100.1.1.1"_s, u"a 100.1.1.1"_s});
    }

    void readsStatus()
    {
        QFETCH(QByteArray, status);
        m_home.write(u"tailscale-status"_s, status);
        QTEST(NetworkHelpers::getSelfMagicDNS(m_tailscale).value_or(QString()), "self");
        QStringList peers;
        for (const OnlinePeer &peer : NetworkHelpers::getOnlinePeers(m_tailscale)) {
            peers.append(peer.hostname + u' ' + peer.ip);
        }
        QTEST(peers, "peers");
    }

    void findsTheLanAddress()
    {
        const InterfaceAddress lan{.interface = u"wlan0"_s, .ipv4 = u"10.0.0.2"_s};
        const QList<InterfaceAddress> lesser{
            {.interface = u"eth0"_s, .ipv4 = u"10.0.0.3"_s, .isUp = false},
            {.interface = u"docker0"_s, .ipv4 = u"10.0.0.4"_s},
            {.interface = u"wg0"_s, .ipv4 = u"10.0.0.5"_s}};
        const QList<InterfaceAddress> others{{.interface = u"lo"_s, .ipv4 = u"10.0.0.1"_s},
                                             {.interface = u"utun3"_s, .ipv4 = u"10.0.0.1"_s},
                                             {.interface = u"eth1"_s, .ipv4 = u"127.1.1.1"_s},
                                             {.interface = u"eth1"_s, .ipv4 = u"100.64.0.1"_s}};
        QCOMPARE(firstLanAddress(others), std::nullopt);
        QCOMPARE(firstLanAddress(others + lesser), u"10.0.0.3"_s);
        QCOMPARE(firstLanAddress(lesser + others + QList{lan} + others), lan.ipv4);
        const InterfaceAddress loopback = interfaceAddresses().value(0);
        QCOMPARE(loopback.interface + u' ' + loopback.ipv4, u"lo 127.0.0.1"_s);
        QVERIFY(loopback.isUp);
    }

private:
    const ScratchHome m_home;
    const TailscalePlaces m_tailscale = scriptedTailscale(m_home);
};

QTEST_GUILESS_MAIN(TestNetwork)
#include "test_network.moc"
