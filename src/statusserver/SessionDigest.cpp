#include "statusserver/SessionDigest.h"

#include "statusserver/BackwardLines.h"
#include "statusserver/FileUtf8.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

std::vector<HistoryRecord> digestSessionLog(int file, const DigestOptions &options,
                                            const std::stop_token &stop)
{
    const auto end = endOfUtf8File(file, options.blockBytes, stop);
    if (!end) {
        return {};
    }
    const auto wanted = static_cast<std::size_t>(options.limit);
    std::vector<HistoryRecord> records;
    JsonReader reader;
    BackwardLines lines(file, *end, {options.blockBytes, options.maxLineBytes}, stop);
    qsizetype unitsLeft = options.maxTextUnits;
    while (records.size() < wanted) {
        const auto line = lines.next();
        if (!line) {
            break;
        }
        if (auto record = readHistoryRecord(reader, *line)) {
            unitsLeft -= record->content.size() + record->timestamp.size();
            if (unitsLeft < 0) {
                break;
            }
            records.push_back(std::move(*record));
        }
    }
    if (lines.failed()) {
        return {};
    }
    std::ranges::reverse(records);
    return records;
}

std::string historyBody(const std::vector<HistoryRecord> &records)
{
    QJsonArray messages;
    for (const HistoryRecord &record : records) {
        messages.append(QJsonObject{{"role"_L1, record.role},
                                    {"content"_L1, record.content},
                                    {"timestamp"_L1, record.timestamp}});
    }
    const QByteArray list = QJsonDocument(messages).toJson(QJsonDocument::Compact);
    return R"({"messages":)" + list.toStdString() + R"(,"count":)" +
           std::to_string(records.size()) + "}";
}

} // namespace ostrelle
