#pragma once

#include <QCollator>
#include <QList>
#include <QString>

#include <algorithm>
#include <vector>

namespace ostrelle
{

// Compares names as the user's language sorts them, whatever their letter case. One thread only.
class NameOrder
{
public:
    NameOrder() { m_collator.setCaseSensitivity(Qt::CaseInsensitive); }

    // Below, equal to or above zero.
    int compare(const QString &a, const QString &b) const { return m_collator.compare(a, b); }

private:
    QCollator m_collator;
};

// The records in the order of `compare(a, b)`, below, equal to or above zero; equal ones keep the
// order that they had.
template<typename Record>
QList<Record> stablySorted(const QList<Record> &records, auto compare)
{
    std::vector<const Record *> order;
    order.reserve(static_cast<std::size_t>(records.size()));
    for (const Record &record : records) {
        order.push_back(&record);
    }
    std::ranges::sort(order, [&](const Record *a, const Record *b) {
        const int difference = compare(*a, *b);
        return difference != 0 ? difference < 0 : a < b;
    });
    QList<Record> sorted;
    sorted.reserve(records.size());
    for (const Record *record : order) {
        sorted.append(*record);
    }
    return sorted;
}

} // namespace ostrelle
