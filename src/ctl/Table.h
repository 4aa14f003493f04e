#pragma once

#include "ctl/Terminal.h"

#include <QList>
#include <QStringList>

namespace ostrelle
{

struct Cell {
    QString text;
    QString color = {}; // a name; empty: the usual one
};

// Rows below a heading. What does not fit into the terminal is cut in the widest columns.
class Table
{
public:
    explicit Table(QStringList headings);

    // As many cells as there are headings.
    void add(const QList<Cell> &row) { m_rows.append(row); }

    QString text(const Terminal &terminal) const;

private:
    QList<int> widths(const Terminal &terminal) const;

    const QStringList m_headings;
    QList<QList<Cell>> m_rows;
};

} // namespace ostrelle
