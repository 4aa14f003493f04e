#include "core/HttpResponseReader.h"

#include <QList>

#include <algorithm>
#include <cctype>

namespace ostrelle
{

namespace
{

struct Header {
    QByteArray name; // in lower case
    QByteArray value;
};

std::optional<Header> headerFrom(const QByteArray &line)
{
    const qsizetype colon = line.indexOf(':');
    if (colon <= 0) {
        return std::nullopt;
    }
    return Header{.name = line.first(colon).toLower(), .value = line.sliced(colon + 1).trimmed()};
}

// A length as the protocol writes it: digits only, and not too many.
std::optional<qint64> lengthFrom(const QByteArray &text, int base)
{
    constexpr qsizetype maxDigits = 15;
    const bool digitsOnly = std::ranges::all_of(text, [base](char c) {
        return (c >= '0' && c <= '9') ||
               (base == 16 && std::isxdigit(static_cast<unsigned char>(c)) != 0);
    });
    if (text.isEmpty() || text.size() > maxDigits || !digitsOnly) {
        return std::nullopt;
    }
    return text.toLongLong(nullptr, base);
}

} // namespace

HttpResponseReader::State HttpResponseReader::feed(QByteArrayView bytes)
{
    m_unread.append(bytes);
    while (step()) {
    }
    return state();
}

HttpResponseReader::State HttpResponseReader::close()
{
    m_phase = m_phase == Phase::Body && !m_bytesLeft ? Phase::Done : Phase::Broken;
    return state();
}

// Reads the next part of the response. False when that needs more bytes, or when it is complete or
// broken.
bool HttpResponseReader::step()
{
    switch (m_phase) {
    case Phase::StatusLine:
        return readLine(&HttpResponseReader::readStatusLine);
    case Phase::Headers:
        return readLine(&HttpResponseReader::readHeader);
    case Phase::Body:
        return readBody(Phase::Done);
    case Phase::ChunkSize:
        return readLine(&HttpResponseReader::readChunkSize);
    case Phase::Chunk:
        return readBody(Phase::ChunkEnd);
    case Phase::ChunkEnd:
        return readLine(&HttpResponseReader::readChunkEnd);
    case Phase::Trailer:
        return readLine(&HttpResponseReader::readTrailer);
    case Phase::Done:
    case Phase::Broken:
        return false;
    }
    Q_UNREACHABLE();
}

bool HttpResponseReader::readLine(Phase (HttpResponseReader::*read)(const QByteArray &line))
{
    const qsizetype end = m_unread.indexOf('\n');
    const qsizetype length = end < 0 ? m_unread.size() : end + 1;
    if (m_headBytes + length > maxHeadBytes) {
        m_phase = Phase::Broken;
        return false;
    }
    if (end < 0) {
        return false;
    }
    QByteArray line = m_unread.first(end);
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    m_unread.remove(0, length);
    m_headBytes += length;
    m_phase = (this->*read)(line);
    return true;
}

HttpResponseReader::Phase HttpResponseReader::readStatusLine(const QByteArray &line)
{
    constexpr qsizetype codeAt = 9; // behind "HTTP/1.1 "
    constexpr qsizetype codeLength = 3;
    const auto status = lengthFrom(line.mid(codeAt, codeLength), 10);
    if (!line.startsWith("HTTP/1.") || !status || *status < 100) {
        return Phase::Broken;
    }
    m_answer = {.status = static_cast<int>(*status), .location = {}, .body = {}};
    m_bytesLeft.reset();
    m_chunked = false;
    return Phase::Headers;
}

HttpResponseReader::Phase HttpResponseReader::readHeader(const QByteArray &line)
{
    if (line.isEmpty()) {
        return phaseAfterHeaders();
    }
    const auto header = headerFrom(line);
    if (!header) {
        return Phase::Broken;
    }
    if (header->name == "location") {
        m_answer.location = header->value;
    } else if (header->name == "transfer-encoding") {
        m_chunked = header->value.toLower().endsWith("chunked");
    } else if (header->name == "content-length") {
        m_bytesLeft = lengthFrom(header->value, 10);
        return m_bytesLeft ? Phase::Headers : Phase::Broken;
    }
    return Phase::Headers;
}

HttpResponseReader::Phase HttpResponseReader::phaseAfterHeaders() const
{
    if (m_answer.status < 200) {
        return Phase::StatusLine; // an interim response; the real one follows
    }
    if (m_answer.status == 204 || m_answer.status == 304) {
        return Phase::Done;
    }
    return m_chunked ? Phase::ChunkSize : Phase::Body;
}

HttpResponseReader::Phase HttpResponseReader::readChunkSize(const QByteArray &line)
{
    m_headBytes = 0; // the limit is for each of these lines: a long body has many
    m_bytesLeft = lengthFrom(line.split(';').first().trimmed(), 16);
    if (!m_bytesLeft) {
        return Phase::Broken;
    }
    return *m_bytesLeft == 0 ? Phase::Trailer : Phase::Chunk;
}

HttpResponseReader::Phase HttpResponseReader::readChunkEnd(const QByteArray &line)
{
    return line.isEmpty() ? Phase::ChunkSize : Phase::Broken;
}

HttpResponseReader::Phase HttpResponseReader::readTrailer(const QByteArray &line)
{
    return line.isEmpty() ? Phase::Done : Phase::Trailer;
}

bool HttpResponseReader::readBody(Phase next)
{
    const qint64 wanted = m_bytesLeft.value_or(m_unread.size());
    const qsizetype count = std::min<qint64>(wanted, m_unread.size());
    const qsizetype room = m_maxBodyBytes - m_answer.body.size();
    m_answer.body.append(m_unread.constData(), std::min(count, room));
    m_unread.remove(0, count);
    if (count > room) {
        m_answer.complete = false;
        m_phase = Phase::Done;
        return false;
    }
    if (!m_bytesLeft) {
        return false;
    }
    *m_bytesLeft -= count;
    if (*m_bytesLeft > 0) {
        return false;
    }
    m_phase = next;
    return true;
}

HttpResponseReader::State HttpResponseReader::state() const
{
    switch (m_phase) {
    case Phase::Done:
        return State::Complete;
    case Phase::Broken:
        return State::Malformed;
    default:
        return State::Reading;
    }
}

} // namespace ostrelle
