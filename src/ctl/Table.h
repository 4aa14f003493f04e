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
    Table(QStringList headings, const Terminal &terminal);

    // As many cells as there are headings.
    void add(QList<Cell> row);

    QString text() const;

private:
    QList<int> widths() const;

    const QStringList m_headings;
    const Terminal m_terminal;
    QList<QList<Cell>> m_rows;
};

} // namespace ostrelle
