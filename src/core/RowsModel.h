#pragma once

#include "core/ListDifference.h"

#include <QAbstractListModel>

#include <algorithm>

namespace ostrelle
{

// A list model over plain values. New rows are matched with the old ones by identity and only what
// differs is changed, so that scroll position, focus and open rows survive a refresh; where that
// would take too many steps, views start afresh. A row has an identity() and an equality; rows of
// the same identity are allowed. Main thread only.
template<typename Row>
class RowsModel : public QAbstractListModel
{
public:
    using QAbstractListModel::QAbstractListModel;

    const QList<Row> &rows() const { return m_rows; }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }

protected:
    void setRows(const QList<Row> &wanted)
    {
        if (m_rows == wanted) {
            return;
        }
        const auto difference =
            ListDifference::between(identitiesOf(m_rows), identitiesOf(wanted), mostSteps(wanted));
        if (!difference) {
            beginResetModel();
            m_rows = wanted;
            endResetModel();
            return;
        }
        remove(difference->removals);
        move(difference->moves);
        insert(difference->insertions, wanted);
        change(wanted);
    }

private:
    // How many steps a difference may take. Each step may shift all rows behind it, so thousands of
    // rows get few steps; hundreds may take as many as they need.
    static qsizetype mostSteps(const QList<Row> &wanted)
    {
        return std::max<qsizetype>(64, 100'000 / std::max<qsizetype>(wanted.size(), 1));
    }

    static QStringList identitiesOf(const QList<Row> &rows)
    {
        QStringList identities;
        identities.reserve(rows.size());
        for (const Row &row : rows) {
            identities.append(row.identity());
        }
        return identities;
    }

    void remove(const QList<ListDifference::Range> &removals)
    {
        for (const auto &[first, count] : removals) {
            beginRemoveRows({}, first, first + count - 1);
            m_rows.remove(first, count);
            endRemoveRows();
        }
    }

    void move(const QList<ListDifference::Move> &moves)
    {
        for (const auto &[from, to] : moves) {
            // Qt wants the row before which the moved one is put, counted before the move.
            beginMoveRows({}, from, from, {}, to > from ? to + 1 : to);
            m_rows.move(from, to);
            endMoveRows();
        }
    }

    void insert(const QList<ListDifference::Range> &insertions, const QList<Row> &wanted)
    {
        for (const auto &[first, count] : insertions) {
            beginInsertRows({}, first, first + count - 1);
            m_rows.insert(first, count, wanted[first]);
            std::copy_n(wanted.cbegin() + first, count, m_rows.begin() + first);
            endInsertRows();
        }
    }

    // One signal for each run of changed rows.
    void change(const QList<Row> &wanted)
    {
        for (int first = 0; first < wanted.size(); ++first) {
            int end = first;
            for (; end < wanted.size() && m_rows[end] != wanted[end]; ++end) {
                m_rows[end] = wanted[end];
            }
            if (end > first) {
                Q_EMIT this->dataChanged(this->index(first), this->index(end - 1));
                first = end;
            }
        }
    }

    QList<Row> m_rows;
};

} // namespace ostrelle
