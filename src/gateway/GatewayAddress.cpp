#include "gateway/GatewayAddress.h"

#include <QRegularExpression>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

struct Parts {
    QString scheme; // empty without one
    bool hasUserPart;
    QString host; // without port, as it is spelled; a scheme without slashes has none
};

// What stands before the first colon is a scheme, unless nothing but a port comes behind it.
Parts partsOf(const QString &address)
{
    static const QRegularExpression form(u"^(?:([^:/?#@]*):(?!\\d+(?:[/?#]|$)))?(//)?([^/?#]*)"_s);
    const QRegularExpressionMatch match = form.match(address);
    const QString authority = match.captured(3);
    const qsizetype userPartEnd = authority.lastIndexOf(u'@');
    const QString machine = authority.sliced(userPartEnd + 1);
    const qsizetype port = machine.lastIndexOf(u':');
    const bool hasPort = port > machine.lastIndexOf(u']'); // colons are also part of IPv6 addresses
    const bool hasHost = match.captured(1).isEmpty() || !match.captured(2).isEmpty();
    return {.scheme = match.captured(1),
            .hasUserPart = userPartEnd >= 0,
            .host = hasHost ? machine.first(hasPort ? port : machine.size()) : QString()};
}

bool isRefused(QChar c)
{
    return c.category() == QChar::Other_Control || c.category() == QChar::Other_Format ||
           c.category() == QChar::Separator_Line || c.category() == QChar::Separator_Paragraph ||
           c == u'\\';
}

bool isOneOf(const QString &text, QLatin1StringView one, QLatin1StringView other)
{
    return text.compare(one, Qt::CaseInsensitive) == 0 ||
           text.compare(other, Qt::CaseInsensitive) == 0;
}

bool looksLocal(const QString &text)
{
    return text.contains("127.0.0.1"_L1) || text.contains("localhost"_L1, Qt::CaseInsensitive);
}

// The name of the user stays. An IPv6 address has colons too, and one before a port is no sign of a
// password: what follows is the path.
QString withoutUsersPassword(const QString &address)
{
    static const QRegularExpression password(u"^((?:[^:/?#@]*:)?//)?+"
                                             "((?>\\[[^\\]]*\\](?=[:/?#]|$)|[^:]*))"
                                             ":(?!\\d+(?:[/?#]|$)).*@"_s,
                                             QRegularExpression::DotMatchesEverythingOption);
    return QString(address).replace(password, u"\\1\\2@"_s);
}

} // namespace

QString toString(AddressProblem problem)
{
    switch (problem) {
    case AddressProblem::Characters:
        return u"has characters that no address has"_s;
    case AddressProblem::UserPart:
        return u"has a user name or password"_s;
    case AddressProblem::Scheme:
        return u"is neither http nor https"_s;
    case AddressProblem::NoHost:
        return u"names no machine"_s;
    case AddressProblem::LooksLocal:
        return u"looks like this machine and is another"_s;
    case AddressProblem::Query:
        return u"has a query or a fragment"_s;
    }
    Q_UNREACHABLE();
}

std::expected<void, AddressProblem> checkGatewayAddress(const QString &address)
{
    if (std::ranges::any_of(address, &isRefused)) {
        return std::unexpected(AddressProblem::Characters);
    }
    const Parts parts = partsOf(address);
    if (parts.hasUserPart || withoutUsersPassword(address) != address) {
        return std::unexpected(AddressProblem::UserPart);
    }
    if (!parts.scheme.isEmpty() && !isOneOf(parts.scheme, "http"_L1, "https"_L1)) {
        return std::unexpected(AddressProblem::Scheme);
    }
    if (!parts.scheme.isEmpty() && parts.host.isEmpty()) {
        return std::unexpected(AddressProblem::NoHost);
    }
    if (looksLocal(address) && !isOneOf(parts.host, "127.0.0.1"_L1, "localhost"_L1)) {
        return std::unexpected(AddressProblem::LooksLocal);
    }
    if (withoutPassword(address) != address) {
        return std::unexpected(AddressProblem::Query);
    }
    return {};
}

QString withoutPassword(const QString &address)
{
    static const QRegularExpression behindThePath(u"[?#].*"_s,
                                                  QRegularExpression::DotMatchesEverythingOption);
    return withoutUsersPassword(address).remove(behindThePath);
}

QString printableHost(const QString &address)
{
    constexpr qsizetype longestName = 253;
    QString host = partsOf(address).host.left(longestName);
    std::ranges::replace_if(host, &isRefused, u'?');
    return host;
}

} // namespace ostrelle
