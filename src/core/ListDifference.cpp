#include "core/ListDifference.h"

#include <QHash>

#include <algorithm>
#include <utility>
#include <vector>

namespace ostrelle
{

namespace
{

using Range = ListDifference::Range;
using Move = ListDifference::Move;

// For each row, the row with the same identity in the other list, or -1. Where an identity occurs
// more than once, the first is matched with the first, the second with the second, and so on.
QList<int> counterparts(const QStringList &rows, const QStringList &others)
{
    QHash<QString, int> first; // of those that were not found yet
    first.reserve(others.size());
    QList<int> nextOfSame(others.size(), -1);
    for (int i = static_cast<int>(others.size()) - 1; i >= 0; --i) {
        nextOfSame[i] = first.value(others.at(i), -1);
        first.insert(others.at(i), i);
    }
    QList<int> found;
    found.reserve(rows.size());
    for (const QString &row : rows) {
        const auto other = first.find(row);
        found.append(other == first.end() ? -1 : *other);
        if (found.last() >= 0) {
            *other = nextOfSame.at(found.last());
        }
    }
    return found;
}

// The inverse mapping: for each place, the row that has it, or -1.
QList<int> inverse(const QList<int> &places, qsizetype size)
{
    QList<int> rows(size, -1);
    for (int i = 0; i < places.size(); ++i) {
        if (places.at(i) >= 0) {
            rows[places.at(i)] = i;
        }
    }
    return rows;
}

QList<Range> rangesWithoutCounterpart(const QList<int> &places)
{
    QList<Range> ranges;
    for (int i = 0; i < places.size(); ++i) {
        if (places.at(i) >= 0) {
            continue;
        }
        if (!ranges.isEmpty() && ranges.last().first + ranges.last().count == i) {
            ++ranges.last().count;
        } else {
            ranges.append({.first = i, .count = 1});
        }
    }
    return ranges;
}

// The values of a longest increasing subsequence, in order.
QList<int> longestIncreasing(const QList<int> &values)
{
    std::vector<int> lowestEnd; // of the subsequences of each length
    std::vector<qsizetype> length(
        static_cast<std::size_t>(values.size())); // of the best one up to each value
    for (qsizetype i = 0; i < values.size(); ++i) {
        const auto end = std::ranges::lower_bound(lowestEnd, values.at(i));
        length[static_cast<std::size_t>(i)] = end - lowestEnd.begin();
        if (end == lowestEnd.end()) {
            lowestEnd.push_back(values.at(i));
        } else {
            *end = values.at(i);
        }
    }
    QList<int> longest(static_cast<qsizetype>(lowestEnd.size()));
    qsizetype wanted = longest.size() - 1;
    for (qsizetype i = values.size() - 1; i >= 0; --i) {
        const bool precedes = wanted == longest.size() - 1 || values.at(i) < longest.at(wanted + 1);
        if (length[static_cast<std::size_t>(i)] == wanted && precedes) {
            longest[wanted--] = values.at(i);
        }
    }
    return longest;
}

// Moves `value` right behind the largest smaller value that is in place already, or to the start.
Move moveIntoOrder(QList<int> &rows, const QList<int> &inPlace, int value)
{
    const auto from = rows.indexOf(value);
    rows.removeAt(from);
    const auto behind = std::ranges::lower_bound(inPlace, value);
    const auto to = behind == inPlace.begin() ? 0 : rows.indexOf(*std::prev(behind)) + 1;
    rows.insert(to, value);
    return {.from = static_cast<int>(from), .to = static_cast<int>(to)};
}

std::optional<QList<Move>> movesIntoOrder(QList<int> rows, qsizetype maxMoves)
{
    QList<int> inPlace = longestIncreasing(rows);
    if (rows.size() - inPlace.size() > maxMoves) {
        return std::nullopt;
    }
    QList<int> wrong;
    std::ranges::copy_if(rows, std::back_inserter(wrong),
                         [&](int value) { return !std::ranges::binary_search(inPlace, value); });
    QList<Move> moves;
    for (const int value : wrong) {
        const Move move = moveIntoOrder(rows, inPlace, value);
        if (move.from != move.to) {
            moves.append(move);
        }
        inPlace.insert(std::ranges::lower_bound(inPlace, value), value);
    }
    return moves;
}

} // namespace

std::optional<ListDifference> ListDifference::between(const QStringList &before,
                                                      const QStringList &after, qsizetype maxSteps)
{
    QList<int> places = counterparts(before, after);
    ListDifference difference;
    difference.removals = rangesWithoutCounterpart(places);
    std::ranges::reverse(difference.removals);
    difference.insertions = rangesWithoutCounterpart(inverse(places, after.size()));

    places.removeAll(-1);
    const auto ranges = difference.removals.size() + difference.insertions.size();
    auto moves = movesIntoOrder(std::move(places), maxSteps - ranges);
    if (!moves) {
        return std::nullopt;
    }
    difference.moves = std::move(*moves);
    return difference;
}

} // namespace ostrelle
