#include "settings/KeychainHelper.h"

#include <QStringDecoder>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString accountOf(const QString &key)
{
    return u"gateway-token:"_s + key;
}

} // namespace

const QString KeychainHelper::activeKey = u"_active_"_s;

std::expected<std::optional<QString>, SecretProblem> KeychainHelper::getToken(SecretStore &store,
                                                                              const QString &key)
{
    const auto secret = store.read(accountOf(key));
    if (!secret) {
        return std::unexpected(secret.error());
    }
    if (!*secret) {
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString token = decoder.decode(**secret);
    return decoder.hasError() ? std::nullopt : std::optional(token);
}

std::expected<void, SecretProblem>
KeychainHelper::saveToken(SecretStore &store, const QString &token, const QString &key)
{
    return store.write(accountOf(key), token.toUtf8());
}

} // namespace ostrelle
