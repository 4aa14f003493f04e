#include "control/Unnamed.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <arpa/inet.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

bool isLoopback(const QString &host)
{
    return host == "localhost"_L1 || host.startsWith("127."_L1) || host == "::1"_L1;
}

QString hostIn(const QString &address)
{
    const QString host = QUrl(address).host();
    return host.isEmpty() && !address.contains(u'/') ? address : host;
}

// A name without a dot may be any word: it counts behind what a host stands behind.
QString patternOf(const QString &host)
{
    const QString name = QRegularExpression::escape(host);
    return host.contains(u'.') || host.contains(u':')
               ? u"(?<![\\w.-])"_s + name + u"(?![\\w-]|\\.\\w)"_s
               : u"(?<=//|@)"_s + name + u"(?![\\w.-])"_s;
}

// A time or a word with colons looks like one until it is read.
bool isForeignIPv6(const QString &text)
{
    in6_addr address{};
    return inet_pton(AF_INET6, text.toLatin1().constData(), &address) == 1 &&
           !IN6_IS_ADDR_LOOPBACK(&address) && !IN6_IS_ADDR_UNSPECIFIED(&address);
}

void removeIPv6(QString &text)
{
    static const QRegularExpression candidate(
        u"(?<![\\w.:])(?:[0-9A-Fa-f]{0,4}:){2,8}(?:(?:\\d{1,3}\\.){3}\\d{1,3}|[0-9A-Fa-f]{1,4})?"
        "(?!\\w|[.:]\\w|::)"_s);
    for (qsizetype from = 0;;) {
        const QRegularExpressionMatch match = candidate.match(text, from);
        if (!match.hasMatch()) {
            return;
        }
        const QString found = isForeignIPv6(match.captured()) ? u"[host]"_s : match.captured();
        text.replace(match.capturedStart(), match.capturedLength(), found);
        from = match.capturedStart() + found.size();
    }
}

// What the log tells of addresses that were refused, and of machines that nobody has saved.
void removeOthers(QString &text)
{
    static const QRegularExpression refused(u"\"[^\"]*\"(?= (?:not added|refused): its address)"_s);
    static const QRegularExpression inTailnet(u"[\\w-]+(?:\\.[\\w-]+)*\\.ts\\.net"_s);
    static const QRegularExpression address(
        u"(?<![\\w.])(?!127\\.|0\\.0\\.0\\.0)(?:\\d{1,3}\\.){3}\\d{1,3}(?![\\w.])"_s);
    text.replace(refused, u"\"[host]\""_s);
    text.replace(inTailnet, u"[host]"_s);
    removeIPv6(text);
    text.replace(address, u"[host]"_s);
}

} // namespace

QString unnamed(QString text, const QStringList &addresses)
{
    QStringList hosts;
    for (const QString &address : addresses) {
        const QString host = hostIn(address);
        if (!host.isEmpty() && !isLoopback(host) && !hosts.contains(host)) {
            hosts.append(host);
        }
    }
    for (qsizetype i = 0; i < hosts.size(); ++i) {
        const QRegularExpression name(patternOf(hosts.at(i)),
                                      QRegularExpression::CaseInsensitiveOption);
        text.replace(name, u"[host %1]"_s.arg(i + 1));
    }
    removeOthers(text);
    return text;
}

} // namespace ostrelle
