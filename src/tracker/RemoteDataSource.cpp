#include "tracker/RemoteDataSource.h"

#include "core/HttpClient.h"
#include "core/OstrelleConfig.h"

#include <QEventLoop>
#include <QUrl>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Runs an event loop of this background thread's own until the exchange has ended, which it does by
// its deadline at the latest.
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

// A line break would end the header, and what follows would be a header of its own.
bool fitsInHeader(const QString &token)
{
    return std::ranges::none_of(token,
                                [](QChar c) { return c.category() == QChar::Other_Control; });
}

} // namespace

bool RemoteDataSource::isRemote()
{
    const QString url = OstrelleConfig::load().gateway.url;
    return !url.contains("127.0.0.1"_L1) && !url.contains("localhost"_L1);
}

std::optional<QString> RemoteDataSource::statusBaseURL()
{
    const QString url = OstrelleConfig::load().gateway.url;
    if (url.startsWith("https://"_L1)) {
        return url + u"/ostrelle"_s;
    }
    const QString host = QString(url).remove("http://"_L1).section(u':', 0, 0);
    if (host.isEmpty() || host == "127.0.0.1"_L1 || host == "localhost"_L1) {
        return std::nullopt;
    }
    return u"http://"_s + host + u":18794"_s;
}

std::expected<QByteArray, FetchError> RemoteDataSource::fetchRemoteData(const QString &base,
                                                                        const QString &endpoint)
{
    const QString token = OstrelleConfig::load().resolveToken();
    if (token.isEmpty() || !fitsInHeader(token)) {
        return std::unexpected(FetchError::authRejected());
    }
    const QUrl url(base + endpoint, QUrl::StrictMode);
    if (!url.isValid()) {
        return std::unexpected(FetchError::notReachable());
    }
    const HttpResult answer = exchange({.url = url,
                                        .headers = {{"Authorization", "Bearer " + token.toUtf8()}},
                                        .deadline = overallWait,
                                        .silence = requestTimeout});
    if (answer && (answer->status == 401 || answer->status == 403)) {
        return std::unexpected(FetchError::authRejected());
    }
    if (!answer || !answer->succeeded() || !answer->complete) {
        return std::unexpected(FetchError::notReachable());
    }
    return answer->body;
}

} // namespace ostrelle
