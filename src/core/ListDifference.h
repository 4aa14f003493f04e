#pragma once

#include <QList>
#include <QStringList>

#include <optional>

namespace ostrelle
{

// The steps that turn one list of identities into another, as list models report them to their
// views: first the removals, then the moves, then the insertions. Each step names the rows as they
// are at that moment. An identity that occurs more than once counts as a different one each time.
struct ListDifference {
    struct Range {
        int first;
        int count;
        friend bool operator==(const Range &, const Range &) = default;
    };
    struct Move {
        int from;
        int to; // the row that it has afterwards
        friend bool operator==(const Move &, const Move &) = default;
    };

    QList<Range> removals;   // from the end to the start
    QList<Move> moves;       // as few single rows as possible
    QList<Range> insertions; // from the start to the end

    // Absent when more than `maxSteps` removals, moves and insertions would be needed. Takes O(n
    // log n) time, and O(n) for each move.
    static std::optional<ListDifference> between(const QStringList &before,
                                                 const QStringList &after, qsizetype maxSteps);
};

} // namespace ostrelle
