#include "tracker/RecordReader.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const JsonObject &emptyObject()
{
    static const JsonObject empty;
    return empty;
}

const JsonArray &emptyArray()
{
    static const JsonArray empty;
    return empty;
}

} // namespace

const QString RecordReader::tooMany = u"more than %1"_s.arg(mostRecords);

RecordReader::RecordReader(const JsonValue &value, QString place, std::optional<QString> &problem)
    : m_object(value.object() != nullptr ? value.object() : &emptyObject())
    , m_place(std::move(place))
    , m_problem(problem)
{
    if (value.object() == nullptr && !m_problem) {
        m_problem = (m_place.isEmpty() ? u"top level"_s : m_place) + u": not an object"_s;
    }
}

QString RecordReader::string(std::string_view name) const
{
    const auto text = (*m_object)[name].string();
    if (!text) {
        report(name, u"not a string"_s);
    }
    return text.value_or(QString());
}

qint64 RecordReader::integer(std::string_view name) const
{
    const auto number = (*m_object)[name].integer();
    if (!number) {
        report(name, u"not an integer"_s);
    }
    return number.value_or(0);
}

std::optional<QString> RecordReader::optionalString(std::string_view name) const
{
    return (*m_object)[name].isNull() ? std::nullopt : std::optional(string(name));
}

const JsonArray &RecordReader::array(std::string_view name) const
{
    const JsonArray *elements = (*m_object)[name].array();
    if (elements == nullptr) {
        report(name, u"not an array"_s);
    }
    return elements != nullptr ? *elements : emptyArray();
}

QString RecordReader::placeOf(std::string_view name) const
{
    const QString member = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    return m_place.isEmpty() ? member : m_place + u'.' + member;
}

QString RecordReader::placeOf(std::string_view name, qsizetype index) const
{
    return placeOf(name) + u'[' + QString::number(index) + u']';
}

void RecordReader::report(std::string_view name, const QString &expected) const
{
    if (!m_problem) {
        const bool missing = m_object->find(name) == nullptr;
        m_problem = placeOf(name) + u": "_s + (missing ? u"missing"_s : expected);
    }
}

} // namespace ostrelle
