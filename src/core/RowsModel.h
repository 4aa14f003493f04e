#pragma once

#include <QAbstractListModel>

#include <algorithm>

namespace ostrelle
{

// A list model over plain values. New rows are matched with the old ones by identity and only what
// differs is changed, so that scroll position, focus and open rows survive a refresh. A row has an
// identity() and an equality; rows of the same identity are allowed. Main thread only.
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
        removeAllBut(wanted);
        for (int i = 0; i < wanted.size(); ++i) {
            place(wanted[i], i);
        }
        removeFrom(static_cast<int>(wanted.size()));
    }

private:
    static bool holds(const QList<Row> &rows, const Row &row)
    {
        return std::ranges::any_of(
            rows, [&](const Row &other) { return other.identity() == row.identity(); });
    }

    void removeAllBut(const QList<Row> &wanted)
    {
        for (int i = rowCount() - 1; i >= 0; --i) {
            if (!holds(wanted, m_rows[i])) {
                beginRemoveRows({}, i, i);
                m_rows.removeAt(i);
                endRemoveRows();
            }
        }
    }

    // The rows before `at` are in place already.
    void place(const Row &row, int at)
    {
        const auto found = std::find_if(m_rows.cbegin() + at, m_rows.cend(), [&](const Row &other) {
            return other.identity() == row.identity();
        });
        if (found == m_rows.cend()) {
            beginInsertRows({}, at, at);
            m_rows.insert(at, row);
            endInsertRows();
            return;
        }
        if (const auto from = static_cast<int>(found - m_rows.cbegin()); from != at) {
            beginMoveRows({}, from, from, {}, at);
            m_rows.move(from, at);
            endMoveRows();
        }
        if (m_rows[at] != row) {
            m_rows[at] = row;
            Q_EMIT this->dataChanged(this->index(at), this->index(at));
        }
    }

    void removeFrom(int first)
    {
        if (first < rowCount()) {
            beginRemoveRows({}, first, rowCount() - 1);
            m_rows.remove(first, m_rows.size() - first);
            endRemoveRows();
        }
    }

    QList<Row> m_rows;
};

} // namespace ostrelle
