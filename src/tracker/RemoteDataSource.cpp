#include "tracker/RemoteDataSource.h"

#include "core/HttpClient.h"
#include "settings/OwnMachine.h"

#include <QEventLoop>
#include <QRegularExpression>
#include <QUrl>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Runs an event loop on this background thread until the exchange has ended, at its deadline at the
// latest.
HttpResult exchange(const HttpRequest &request)
{
    HttpClient client(RemoteDataSource::maxBodyBytes);
    QEventLoop untilDone;
    HttpResult result = std::unexpected(QString());
    client.send(request, [&](const HttpResult &answer) {
        result = answer;
        untilDone.quit();
    });
    untilDone.exec();
    return result;
}

std::optional<QString> statusBaseOf(const QString &gatewayURL)
{
    if (gatewayURL.startsWith("https://"_L1, Qt::CaseInsensitive)) {
        return gatewayURL + u"/ostrelle"_s;
    }
    static const QRegularExpression userPart(u"^[^/?#]*@"_s);
    const QString host = QString(gatewayURL)
                             .remove("http://"_L1, Qt::CaseInsensitive)
                             .remove(userPart)
                             .section(u':', 0, 0);
    if (host.isEmpty() || host == "127.0.0.1"_L1 || host == "localhost"_L1) {
        return std::nullopt;
    }
    return u"http://"_s + host + u":18794"_s;
}

} // namespace

bool RemoteDataSource::isRemote(const OstrelleConfig &config)
{
    return !isLocalUrl(config.gateway.url);
}

std::optional<QString> RemoteDataSource::statusBaseURL(const OstrelleConfig &config)
{
    return statusBaseOf(config.gateway.url);
}

std::expected<QByteArray, FetchError>
RemoteDataSource::fetchRemoteData(const QString &base, const QString &endpoint,
                                  const OstrelleConfig &config, const Tokens &tokens)
{
    // The base is cut from the gateway's text, and what the cut leaves may be another host.
    const QString gatewayURL = config.gateway.url;
    const bool isSameHost = QUrl(base).host() == QUrl(gatewayURL).host();
    const QString token = isSameHost ? tokens.tokenFor(gatewayURL, config)
                                     : tokens.getToken(gatewayURL).value_or(QString());
    if (token.isEmpty()) {
        return std::unexpected(FetchError::authRejected());
    }
    if (base != statusBaseURL(config)) {
        return std::unexpected(FetchError::notReachable());
    }
    return fetchWithToken(base, endpoint, token);
}

std::expected<QByteArray, FetchError> RemoteDataSource::fetchWithToken(const QString &base,
                                                                       const QString &endpoint,
                                                                       const QString &token,
                                                                       const FetchLimits &limits)
{
    const QUrl url(base + endpoint, QUrl::StrictMode);
    if (!url.isValid()) {
        return std::unexpected(FetchError::notReachable());
    }
    const HttpResult answer = exchange({.url = url,
                                        .headers = {{"Authorization", bearer(token)}},
                                        .deadline = limits.overall,
                                        .silence = limits.request});
    if (answer && (answer->status == 401 || answer->status == 403)) {
        return std::unexpected(FetchError::authRejected());
    }
    if (!answer || !answer->succeeded() || !answer->complete) {
        return std::unexpected(FetchError::notReachable());
    }
    return answer->body;
}

} // namespace ostrelle
