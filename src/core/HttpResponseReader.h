#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace ostrelle
{

struct HttpAnswer {
    int status = 0;
    QByteArray location; // of a redirect
    QByteArray body;
    bool complete = true; // false: the body was longer than wanted, and was cut

    bool succeeded() const { return status >= 200 && status <= 299; }
};

// Reads one HTTP/1 response as it arrives. Whatever the server sends, it keeps no more than the
// head's limit and the wanted length of body.
class HttpResponseReader
{
public:
    static constexpr qsizetype maxHeadBytes = qsizetype{64} * 1024;

    enum class State { Reading, Complete, Malformed };

    explicit HttpResponseReader(qsizetype maxBodyBytes)
        : m_maxBodyBytes(maxBodyBytes)
    {
    }

    // The next bytes from the server. After Complete or Malformed there is nothing more to feed.
    State feed(QByteArrayView bytes);

    // The server has closed the connection: where no length was announced, this is the end.
    State close();

    // What was read, once it is complete.
    const HttpAnswer &answer() const { return m_answer; }

private:
    enum class Phase {
        StatusLine,
        Headers,
        Body,
        ChunkSize,
        Chunk,
        ChunkEnd,
        Trailer,
        Done,
        Broken
    };

    bool step();
    bool readLine(Phase (HttpResponseReader::*read)(const QByteArray &line));
    Phase readStatusLine(const QByteArray &line);
    Phase readHeader(const QByteArray &line);
    Phase readChunkSize(const QByteArray &line);
    Phase readChunkEnd(const QByteArray &line);
    Phase readTrailer(const QByteArray &line);
    Phase phaseAfterHeaders() const;
    bool readBody(Phase next);
    State state() const;

    const qsizetype m_maxBodyBytes;
    Phase m_phase = Phase::StatusLine;
    HttpAnswer m_answer;
    QByteArray m_unread;
    qsizetype m_headBytes = 0;
    std::optional<qint64> m_bytesLeft; // of the body or chunk; none: up to the connection's end
    bool m_chunked = false;
};

} // namespace ostrelle
