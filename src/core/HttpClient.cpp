#include "core/HttpClient.h"

#include <QDeadlineTimer>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int maxRedirects = 5;

int portOf(const QUrl &url)
{
    return url.port(url.scheme() == "https"_L1 ? 443 : 80);
}

bool isSameOrigin(const QUrl &a, const QUrl &b)
{
    return a.scheme() == b.scheme() && a.host() == b.host() && portOf(a) == portOf(b);
}

// Where a redirect within the same origin leads, as the request that goes there.
std::optional<HttpRequest> redirected(HttpRequest request, const HttpAnswer &answer)
{
    const QUrl target = request.url.resolved(QUrl::fromEncoded(answer.location, QUrl::StrictMode));
    const bool keepsMethod = answer.status == 307 || answer.status == 308;
    const bool changesMethod = answer.status >= 301 && answer.status <= 303;
    if (answer.location.isEmpty() || !(keepsMethod || changesMethod) || !target.isValid() ||
        !isSameOrigin(request.url, target)) {
        return std::nullopt;
    }
    request.url = target;
    if (changesMethod) {
        request.body.reset();
    }
    return request;
}

} // namespace

std::optional<QUrl> endpoint(const QString &baseUrl, const QString &path)
{
    const QUrl url(baseUrl + path, QUrl::StrictMode);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

QByteArray bearer(const QString &token)
{
    QByteArray value = "Bearer " + token.toUtf8();
    // A pasted line break must not end the header.
    value.removeIf([](char c) { return c == '\r' || c == '\n' || c == '\0'; });
    return value;
}

void HttpClient::send(const HttpRequest &request, const HttpExchange::Done &done)
{
    follow(request, maxRedirects, done);
}

void HttpClient::abort()
{
    for (QObject *exchange : m_exchanges.children()) {
        static_cast<HttpExchange *>(exchange)->abort();
    }
}

void HttpClient::follow(const HttpRequest &request, int redirectsLeft,
                        const HttpExchange::Done &done)
{
    const QDeadlineTimer deadline(request.deadline);
    new HttpExchange(
        request, m_maxBodyBytes,
        [this, request, redirectsLeft, done, deadline](const HttpResult &result) {
            auto next = result && redirectsLeft > 0 ? redirected(request, *result) : std::nullopt;
            if (!next) {
                done(result);
                return;
            }
            next->deadline = std::chrono::milliseconds(deadline.remainingTime());
            follow(*next, redirectsLeft - 1, done);
        },
        &m_exchanges);
}

} // namespace ostrelle
