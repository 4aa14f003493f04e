#include "HttpMessage.h"

#include <QJsonDocument>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;

namespace
{

std::optional<Request> parseHead(const QByteArray &head)
{
    const QList<QByteArray> lines = head.split('\n');
    const QList<QByteArray> first = lines.first().trimmed().split(' ');
    if (first.size() != 3 || !first[1].startsWith('/') || !first[2].startsWith("HTTP/1.")) {
        return std::nullopt;
    }
    Request request;
    request.method = first[0];
    request.target = first[1];
    request.path = first[1].split('?').first();
    for (const QByteArray &line : lines.sliced(1)) {
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0) {
            return std::nullopt;
        }
        request.headers[line.first(colon).toLower()] = line.sliced(colon + 1).trimmed();
    }
    return request;
}

std::expected<qsizetype, int> bodySize(const Request &request)
{
    if (request.headers.contains("transfer-encoding")) {
        return std::unexpected(411);
    }
    if (!request.headers.contains("content-length")) {
        return 0;
    }
    bool isNumber = false;
    const qulonglong size = request.header("content-length").toULongLong(&isNumber);
    if (!isNumber) {
        return std::unexpected(400);
    }
    if (size > qulonglong{maxBodyBytes}) {
        return std::unexpected(413);
    }
    return static_cast<qsizetype>(size);
}

} // namespace

QByteArray Request::header(const QByteArray &name) const
{
    const auto found = headers.find(name);
    return found != headers.end() ? found->second : QByteArray();
}

Reply Reply::json(const QJsonObject &object)
{
    return {.body = QJsonDocument(object).toJson(QJsonDocument::Compact)};
}

Reply Reply::error(int status, const QString &message)
{
    Reply reply = json({{u"error"_s, QJsonObject{{u"message"_s, message}, {u"code"_s, status}}}});
    reply.status = status;
    return reply;
}

QByteArray Reply::head(qint64 contentLength) const
{
    // Clients go by the number; the words behind it are decoration.
    return "HTTP/1.1 " + QByteArray::number(status) + (status == 200 ? " OK" : " Not OK") +
           "\r\nContent-Type: application/json\r\nContent-Length: " +
           QByteArray::number(contentLength) + "\r\nConnection: close\r\n\r\n";
}

std::expected<std::optional<Request>, int> parseRequest(QByteArrayView received)
{
    const QByteArrayView headEnd = "\r\n\r\n";
    const qsizetype end = received.first(qMin(received.size(), maxHeadBytes)).indexOf(headEnd);
    if (end < 0 && received.size() >= maxHeadBytes) {
        return std::unexpected(431);
    }
    if (end < 0) {
        return std::nullopt;
    }
    auto request = parseHead(received.first(end).toByteArray());
    if (!request) {
        return std::unexpected(400);
    }
    const auto size = bodySize(*request);
    if (!size) {
        return std::unexpected(size.error());
    }
    const QByteArrayView body = received.sliced(end + headEnd.size());
    if (body.size() < *size) {
        return std::nullopt;
    }
    request->body = body.first(*size).toByteArray();
    return request;
}

} // namespace ostrelle::simulator
