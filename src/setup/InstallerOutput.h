#pragma once

#include <QByteArrayList>
#include <QStringDecoder>

namespace ostrelle
{

// Turns what the installer prints into messages, piece by piece as it arrives: one for each line
// that is not empty, and one for each half of a line that comes in two pieces.
class InstallerOutput
{
public:
    // The messages of one piece. A piece that is not UTF-8 gives none; a character that continues
    // in the next piece waits for it.
    QByteArrayList take(const QByteArray &piece);

    // The installer has said that the password was refused. The line that says so is no message.
    bool sudoFailed() const { return m_sudoFailed; }

private:
    bool reportsFailure(QStringView line) const;

    QStringDecoder m_decoder = QStringDecoder(QStringDecoder::Utf8);
    QString m_lineSoFar; // the end of what came of a line that may go on in the next piece
    bool m_sudoFailed = false;
};

} // namespace ostrelle
