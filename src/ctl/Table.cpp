#include "ctl/Table.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString gap = u"  "_s;
constexpr int narrowest = 3; // a letter or two and the mark

} // namespace

Table::Table(QStringList headings, const Terminal &terminal)
    : m_headings(std::move(headings))
    , m_terminal(terminal)
{
}

// Spelled before it is measured: what the locale lacks becomes wider, or has no width at all.
void Table::add(QList<Cell> row)
{
    for (Cell &cell : row) {
        cell.text = m_terminal.spelled(cell.text);
    }
    m_rows.append(std::move(row));
}

QList<int> Table::widths() const
{
    QList<int> widths;
    for (qsizetype column = 0; column < m_headings.size(); ++column) {
        int width = widthOf(m_headings.at(column));
        for (const QList<Cell> &row : m_rows) {
            width = std::max(width, widthOf(row.at(column).text));
        }
        widths.append(width);
    }
    if (!m_terminal.columns) {
        return widths;
    }
    const auto gaps = static_cast<int>(gap.size() * (widths.size() - 1));
    int excess = std::accumulate(widths.begin(), widths.end(), gaps) - *m_terminal.columns;
    for (; excess > 0; --excess) {
        const auto widest = std::ranges::max_element(widths);
        if (*widest <= narrowest) {
            break;
        }
        --*widest;
    }
    return widths;
}

QString Table::text() const
{
    const QList<int> columns = widths();
    const auto line = [&](const auto &textAt) {
        QString text;
        for (qsizetype column = 0; column < columns.size(); ++column) {
            const bool isLast = column + 1 == columns.size();
            const auto [plain, shown] = textAt(column);
            text += shown;
            if (!isLast) {
                text += QString(columns.at(column) - widthOf(plain), u' ') + gap;
            }
        }
        while (text.endsWith(u' ')) {
            text.chop(1);
        }
        return text + u'\n';
    };
    QString text = line([&](qsizetype column) {
        const QString heading = elided(m_headings.at(column), columns.at(column), m_terminal);
        return std::pair(heading, m_terminal.bold(heading));
    });
    for (const QList<Cell> &row : m_rows) {
        text += line([&](qsizetype column) {
            const QString cell = elided(row.at(column).text, columns.at(column), m_terminal);
            return std::pair(cell, m_terminal.colored(cell, row.at(column).color));
        });
    }
    return text;
}

} // namespace ostrelle
