#pragma once

#include "settings/Tokens.h"
#include "tracker/FetchError.h"

#include <QString>

#include <expected>
#include <string>
#include <string_view>
#include <type_traits>

namespace ostrelle
{

// One of the three documents as it was obtained, and from where.
struct TrackerDocument {
    bool isRemote; // the configured gateway is on another machine
    std::expected<std::string, FetchError> text;
};

// Fetches the endpoint from the gateway's machine, or reads the local file when the gateway is this
// machine's. Blocks: background threads only.
TrackerDocument obtainDocument(const QString &endpoint, const QString &localPath,
                               const OstrelleConfig &config, const Tokens &tokens);

// The configured cron tracker file, or the default one of a configuration that names none.
QString cronFilePathOf(const OstrelleConfig &config);

// Why there is nothing to show. One cause has one text, whatever the dashboard.
enum class DocumentProblem {
    OtherMachine, // it cannot be reached, refuses the token, gets none, or sends no such document
    NoFile,       // this machine's file is missing or cannot be read
};

QString descriptionOf(DocumentProblem problem);

// The document as `read(text)` understands it, or what the user is told. When a file of this
// machine is not understood, that is `unreadable` and what is wrong in it.
template<typename Reader>
std::invoke_result_t<Reader, std::string_view>
readDocument(const TrackerDocument &document, const QString &unreadable, const Reader &read)
{
    if (!document.text) {
        return std::unexpected(descriptionOf(document.isRemote ? DocumentProblem::OtherMachine
                                                               : DocumentProblem::NoFile));
    }
    auto record = read(*document.text);
    if (!record) {
        return std::unexpected(document.isRemote ? descriptionOf(DocumentProblem::OtherMachine)
                                                 : unreadable + record.error());
    }
    return record;
}

} // namespace ostrelle
