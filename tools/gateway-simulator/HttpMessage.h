#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QJsonObject>

#include <expected>
#include <map>
#include <optional>

namespace ostrelle::simulator
{

inline constexpr qsizetype maxHeadBytes = qsizetype{16} * 1024;
inline constexpr qsizetype maxBodyBytes = qsizetype{1024} * 1024;

struct Request {
    QByteArray method;
    QByteArray path; // without the query
    QByteArray target;
    std::map<QByteArray, QByteArray> headers; // names in lower case
    QByteArray body;

    QByteArray header(const QByteArray &name) const; // empty when it is not there
};

struct Reply {
    int status = 200;
    QByteArray body;

    static Reply json(const QJsonObject &object);
    // The error object that chat clients know, with a sentence about what was wrong.
    static Reply error(int status, const QString &message);

    // The status line and the headers, with the blank line behind them.
    QByteArray head() const { return head(body.size()); }
    QByteArray head(qint64 contentLength) const;
};

// Reads the request that `received` begins with: nothing while more has to come, and the status of
// the refusal when it is malformed or too large.
std::expected<std::optional<Request>, int> parseRequest(QByteArrayView received);

} // namespace ostrelle::simulator
