// Makes a pairing link from any address, token and key, one a line, and reads it with a standard
// parser: every value must come back as it was.

#include "Input.h"
#include "gateway/PairingLink.h"

#include <QUrl>
#include <QUrlQuery>

using namespace ostrelle;

namespace
{

QString valueIn(const QUrlQuery &query, const char *name)
{
    const QString value = query.queryItemValue(QString::fromLatin1(name), QUrl::FullyEncoded);
    return QUrl::fromPercentEncoding(value.toLatin1());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    if (!bytes.isValidUtf8()) {
        return 0;
    }
    const QString text = QString::fromUtf8(bytes);
    const QString address = text.section(u'\n', 0, 0);
    const QString token = text.section(u'\n', 1, 1);
    const QString key = text.section(u'\n', 2);
    const QUrl link(pairingLink(address, token, key), QUrl::StrictMode);
    require(link.scheme() == QStringLiteral("ostrelle") && link.host() == QStringLiteral("config"));
    const QUrlQuery query(link);
    require(query.queryItems().size() == (key.isEmpty() ? 2 : 3));
    require(valueIn(query, "gatewayBaseURL") == address);
    require(valueIn(query, "token") == token);
    require(valueIn(query, "geminiAPIKey") == key);
    return 0;
}
