#include "setup/InstallerOutput.h"

#include <QStringList>
#include <QStringView>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr auto failureMark = "SUDO_FAILED"_L1;

} // namespace

QByteArrayList InstallerOutput::take(const QByteArray &piece)
{
    const QString text = m_decoder(piece);
    if (m_decoder.hasError()) {
        m_decoder.resetState();
        return {};
    }
    QByteArrayList messages;
    const auto lines = QStringView(text).split(u'\n');
    for (const QStringView line : lines) {
        if (reportsFailure(line)) {
            m_sudoFailed = true;
        } else if (!line.isEmpty()) {
            messages.append(line.toUtf8());
        }
        m_lineSoFar.clear();
    }
    m_lineSoFar = lines.last().right(failureMark.size()).toString();
    return messages;
}

// The mark counts also when it came in two pieces.
bool InstallerOutput::reportsFailure(QStringView line) const
{
    return line.contains(failureMark) ||
           (!m_lineSoFar.isEmpty() && QString(m_lineSoFar).append(line).contains(failureMark));
}

} // namespace ostrelle
