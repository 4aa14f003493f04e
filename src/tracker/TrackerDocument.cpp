#include "tracker/TrackerDocument.h"

#include "core/ExpandPath.h"
#include "core/Json.h"
#include "platform/Files.h"
#include "settings/OstrelleConfig.h"
#include "tracker/RemoteDataSource.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

std::expected<std::string, FetchError> fetchText(const QString &base, const QString &endpoint,
                                                 const OstrelleConfig &config, const Tokens &tokens)
{
    const auto body = RemoteDataSource::fetchRemoteData(base, endpoint, config, tokens);
    if (!body) {
        return std::unexpected(body.error());
    }
    return body->toStdString();
}

std::expected<std::string, FetchError> readText(const QString &path)
{
    const auto isJson = [](std::string_view text) { return parseJson(text).has_value(); };
    auto content = readWhole(path, maxDocumentBytes, isJson);
    if (!content) {
        return std::unexpected(FetchError::notReachable());
    }
    return std::move(*content);
}

} // namespace

TrackerDocument obtainDocument(const QString &endpoint, const QString &localPath,
                               const OstrelleConfig &config, const Tokens &tokens)
{
    const bool isRemote = RemoteDataSource::isRemote(config);
    const auto base = isRemote ? RemoteDataSource::statusBaseURL(config) : std::nullopt;
    return {.isRemote = isRemote,
            .text = base ? fetchText(*base, endpoint, config, tokens) : readText(localPath)};
}

QString cronFilePathOf(const OstrelleConfig &config)
{
    return expandPath(config.paths.cronFile.value_or(u"~/.ostrelle/ostrelle-cron-tracker.json"_s));
}

QString descriptionOf(DocumentProblem problem)
{
    switch (problem) {
    case DocumentProblem::OtherMachine:
        return u"Remote gateway not reachable — check connection or token."_s;
    case DocumentProblem::NoFile:
        return FetchError::notReachable().description();
    }
    return {};
}

} // namespace ostrelle
