#include "tracker/GatewayTool.h"

#include "core/ToolEnvironment.h"
#include "platform/ChildProcess.h"

#include <QStringDecoder>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString decodeUtf8(const QByteArray &bytes)
{
    // Keeps a byte order mark: the text is passed on as it came.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(bytes);
    return decoder.hasError() ? QString() : text;
}

} // namespace

GatewayTool::GatewayTool(QStringList candidates, std::chrono::milliseconds deadline)
    : m_candidates(std::move(candidates))
    , m_deadline(deadline)
{
}

QString GatewayTool::findDuskrell() const
{
    return findTool(m_candidates, u"duskrell"_s, qEnvironmentVariable("PATH")).value_or(QString());
}

QString GatewayTool::runCommand(const QString &program, const QStringList &args,
                                const std::stop_token &stop) const
{
    const auto result = runChild({.program = program,
                                  .arguments = args,
                                  .environment = toolEnvironment(toolSearchPath(program))},
                                 {.killAfter = m_deadline, .killLeftovers = true, .stop = stop});
    return result ? decodeUtf8(result->output) : QString();
}

} // namespace ostrelle
