#pragma once

#include "core/Json.h"

#include <QList>

namespace ostrelle
{

// A document with more agents, jobs or projects counts as unreadable: it would take gigabytes, and
// nobody could look through them.
constexpr std::size_t mostRecords = 100'000;

// Reads a typed record from an object. A member that is missing or of another type makes the whole
// document unreadable; the first such problem is kept, with its place: "projects[2].description:
// missing".
class RecordReader
{
public:
    // `place` is the object's own, empty for the top level; `problem` is shared by all readers of
    // one document.
    RecordReader(const JsonValue &value, QString place, std::optional<QString> &problem);

    QString string(std::string_view name) const;
    qint64 integer(std::string_view name) const;

    // Nothing for a member that is absent or null.
    std::optional<QString> optionalString(std::string_view name) const;

    // The elements of an array, each as `readItem(element, place)` reads it.
    template<typename Item>
    QList<Item> list(std::string_view name, auto readItem) const
    {
        QList<Item> items;
        const JsonArray &elements = array(name);
        if (elements.size() > mostRecords) {
            report(name, tooMany);
            return items;
        }
        items.reserve(static_cast<qsizetype>(elements.size()));
        for (const JsonValue &element : elements) {
            items.append(readItem(element, placeOf(name, items.size())));
        }
        return items;
    }

private:
    const JsonArray &array(std::string_view name) const;
    QString placeOf(std::string_view name) const;
    QString placeOf(std::string_view name, qsizetype index) const;
    void report(std::string_view name, const QString &expected) const;

    static const QString tooMany;

    const JsonObject *m_object;
    const QString m_place;
    std::optional<QString> &m_problem;
};

// Decodes a whole document, of which `readRecord(value, problem)` reads the top level, or says what
// is wrong with it.
template<typename Record>
std::expected<Record, QString> decodeStrictly(std::string_view text, auto readRecord)
{
    const auto document = parseJson(text);
    if (!document) {
        return std::unexpected(document.error());
    }
    std::optional<QString> problem;
    Record record = readRecord(*document, problem);
    if (problem) {
        return std::unexpected(*problem);
    }
    return record;
}

} // namespace ostrelle
