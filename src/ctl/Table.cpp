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

Table::Table(QStringList headings)
    : m_headings(std::move(headings))
{
}

QList<int> Table::widths(const Terminal &terminal) const
{
    QList<int> widths;
    for (qsizetype column = 0; column < m_headings.size(); ++column) {
        int width = widthOf(m_headings.at(column));
        for (const QList<Cell> &row : m_rows) {
            width = std::max(width, widthOf(row.at(column).text));
        }
        widths.append(width);
    }
    if (!terminal.columns) {
        return widths;
    }
    const auto gaps = static_cast<int>(gap.size() * (widths.size() - 1));
    int excess = std::accumulate(widths.begin(), widths.end(), gaps) - *terminal.columns;
    for (; excess > 0; --excess) {
        const auto widest = std::ranges::max_element(widths);
        if (*widest <= narrowest) {
            break;
        }
        --*widest;
    }
    return widths;
}

QString Table::text(const Terminal &terminal) const
{
    const QList<int> columns = widths(terminal);
    const auto line = [&](const auto &textAt) {
        QString text;
        for (qsizetype column = 0; column < columns.size(); ++column) {
            const bool isLast = column + 1 == columns.size();
            const auto [plain, shown] = textAt(column);
            text += shown;
            if (!isLast) {
                text += QString(std::max(columns.at(column) - widthOf(plain), 0), u' ') + gap;
            }
        }
        while (text.endsWith(u' ')) {
            text.chop(1);
        }
        return text + u'\n';
    };
    QString text = line([&](qsizetype column) {
        const QString heading = elided(m_headings.at(column), columns.at(column), terminal);
        return std::pair(heading, terminal.bold(heading));
    });
    for (const QList<Cell> &row : m_rows) {
        text += line([&](qsizetype column) {
            const QString cell = elided(row.at(column).text, columns.at(column), terminal);
            return std::pair(cell, terminal.colored(cell, row.at(column).color));
        });
    }
    return text;
}

} // namespace ostrelle
