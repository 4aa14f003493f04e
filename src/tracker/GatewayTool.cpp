#include "tracker/GatewayTool.h"

#include "core/ToolEnvironment.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"

#include <QStringDecoder>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Far beyond any list of sessions or jobs.
constexpr qsizetype maxOutputBytes = qsizetype{16} * 1024 * 1024;

QString decodeUtf8(const QByteArray &bytes)
{
    // Keeps a byte order mark: the text is passed on as it came.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(bytes);
    return decoder.hasError() ? QString() : text;
}

QString outputOf(const ChildCommand &command, std::chrono::milliseconds deadline)
{
    const auto result = runChild(
        command, {.killAfter = deadline, .maxOutputBytes = maxOutputBytes, .killLeftovers = true});
    return result ? decodeUtf8(result->output) : QString();
}

} // namespace

QStringList GatewayTool::defaultCandidates()
{
    return {u"/opt/homebrew/bin/duskrell"_s, u"/usr/local/bin/duskrell"_s};
}

GatewayTool::GatewayTool(QStringList candidates, std::chrono::milliseconds deadline)
    : m_candidates(std::move(candidates))
    , m_deadline(deadline)
{
}

QString GatewayTool::findDuskrell() const
{
    const auto known = std::ranges::find_if(m_candidates, fileExists);
    if (known != m_candidates.end()) {
        return *known;
    }
    const ChildCommand search{.program = u"/usr/bin/env"_s,
                              .arguments = {u"which"_s, u"duskrell"_s}};
    return outputOf(search, m_deadline).trimmed();
}

QString GatewayTool::runCommand(const QString &program, const QStringList &args) const
{
    return outputOf({.program = program, .arguments = args, .environment = toolEnvironment()},
                    m_deadline);
}

} // namespace ostrelle
