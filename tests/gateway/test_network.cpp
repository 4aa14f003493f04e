#include "gateway/LanAddress.h"
#include "gateway/NetworkHelpers.h"
#include "gateway/Scripts.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestNetwork : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        for (const QString &file :
             {u"tailscale-ip"_s, u"tailscale-serve"_s, u"tailscale-status"_s}) {
            QFile::remove(m_home.path(file));
        }
    }

    void argumentsArriveAsTheyAre()
    {
        const QStringList arguments{u"it's"_s,          u""_s,           u"a b"_s,
                                    u"$HOME `id` \\"_s, u"two\nlines"_s, u"'"_s};
        QCOMPARE(
            NetworkHelpers::runProcess(u"/usr/bin/printf"_s, QStringList(u"[%s]"_s) + arguments),
            u"[it's][][a b][$HOME `id` \\][two\nlines][']"_s);
    }

    void readsAddressAndServeLine_data()
    {
        QTest::addColumn<QByteArray>("printed");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("serve");
        QTest::newRow("blank lines") << QByteArray(" \n\n") << QString() << QString();
        QTest::newRow("first of two lines, text behind it")
            << QByteArray("# x\n\t https://a.ts.net (tailnet only) \r\nhttps://b")
            << u"# x\n\t https://a.ts.net (tailnet only) \r\nhttps://b"_s
            << u"https://a.ts.net (tailnet only) \r"_s;
    }
    void readsAddressAndServeLine()
    {
        QFETCH(QByteArray, printed);
        const TailscalePlaces places = scriptedTailscale(m_home);
        m_home.write(u"tailscale-ip"_s, printed);
        m_home.write(u"tailscale-serve"_s, printed);
        QTEST(NetworkHelpers::getTailscaleIP(places).value_or(QString()), "address");
        QTEST(NetworkHelpers::getTailscaleServeURL(places).value_or(QString()), "serve");
    }

    void readsStatus_data()
    {
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<QString>("self");
        QTest::addColumn<QStringList>("peers");
        const auto self = [](const char *row, const QByteArray &status, const QString &name = {}) {
            QTest::newRow(row) << status << name << QStringList();
        };
        const auto peers = [](const char *row, const QByteArray &list, const QStringList &online) {
            QTest::newRow(row) << R"({"Peer":{)" + list + "}}" << QString() << online;
        };
        const QByteArray ips = R"("TailscaleIPs":["fd7a::1","100.1.1.1","100.1.1.2"]},)";
        const QByteArray on = R"({"Online":true,)";

        self("not logged in", "Logged out.\n");
        self("no dot", R"({"Self":{"DNSName":"a.ts.net"}})", u"a.ts.net"_s);
        self("two dots", R"({"Self":{"DNSName":"a.."}})", u"a."_s);
        self("nameless, peers in a list", R"({"Self":{"DNSName":"."},"Peer":[]})");
        peers("in document order, odd ones left out",
              R"("z":)" + on + R"("DNSName":"z",)" + ips + R"("b":7,)" +
                  R"("c":{"Online":false,"DNSName":"c",)" + ips + R"("d":{"DNSName":"d",)" + ips +
                  R"("e":{"Online":1,"DNSName":"e",)" + ips + R"("f":)" + on + ips + R"("g":)" +
                  on + R"("DNSName":"g","TailscaleIPs":["fd7a::2"]},"h":)" + on +
                  R"("DNSName":"h","TailscaleIPs":["100.1.1.9",5]},"a":)" + on +
                  R"("DNSName":"a",)" + ips.chopped(1),
              {u"z 100.1.1.1"_s, u"a 100.1.1.1"_s});
    }
    void readsStatus()
    {
        QFETCH(QByteArray, status);
        const TailscalePlaces places = scriptedTailscale(m_home);
        m_home.write(u"tailscale-status"_s, status);
        QTEST(NetworkHelpers::getSelfMagicDNS(places).value_or(QString()), "self");
        QStringList peers;
        for (const OnlinePeer &peer : NetworkHelpers::getOnlinePeers(places)) {
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
    }

private:
    const ScratchHome m_home;
};

QTEST_GUILESS_MAIN(TestNetwork)
#include "test_network.moc"
