#include "ctl/PairingCode.h"

#include <climits>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Modules of light border. Readers want the first and put up with the second.
constexpr int border = 4;
constexpr int thinBorder = 2;

// Of the palette's cube of colours, which no theme changes.
const QString blackOnWhite = u"\x1b[38;5;16;48;5;231m"_s;
const QString onBlack = u"\x1b[48;5;16m"_s;
const QString onWhite = u"\x1b[48;5;231m"_s;
const QString usual = u"\x1b[0m"_s;

// A code with its border.
class Modules
{
public:
    Modules(const QStringList &rows, int around)
        : m_rows(rows)
        , m_border(around)
    {
    }

    int size() const { return static_cast<int>(m_rows.size()) + 2 * m_border; }

    bool isDark(int column, int row) const
    {
        return m_rows.value(row - m_border).mid(column - m_border, 1) == u"#"_s;
    }

private:
    const QStringList &m_rows;
    const int m_border;
};

// Two rows of modules in a line. The ink is what the terminal draws with: the dark modules with
// colours or on a light background, the light ones on a dark one.
QString halfBlocks(const Modules &modules, bool inkIsDark, bool hasColors)
{
    QString text;
    for (int row = 0; row < modules.size(); row += 2) {
        QString line;
        for (int column = 0; column < modules.size(); ++column) {
            const bool upper = modules.isDark(column, row) == inkIsDark;
            const bool lower = modules.isDark(column, row + 1) == inkIsDark;
            line += upper ? (lower ? u"█"_s : u"▀"_s) : (lower ? u"▄"_s : u" "_s);
        }
        text += (hasColors ? blackOnWhite + line + usual : line) + u'\n';
    }
    return text;
}

QString pairs(const Modules &modules, bool inkIsDark, bool hasColors)
{
    QString text;
    for (int row = 0; row < modules.size(); ++row) {
        for (int column = 0; column < modules.size(); ++column) {
            const bool isDark = modules.isDark(column, row);
            text += hasColors ? (isDark ? onBlack : onWhite) + u"  "_s
                              : QString(2, isDark == inkIsDark ? u'#' : u' ');
        }
        text += hasColors ? usual + u'\n' : u"\n"_s;
    }
    return text;
}

} // namespace

std::optional<QString> pairingCode(const QStringList &rows, const Terminal &terminal,
                                   Background background)
{
    const int columnsOfModule = terminal.isUtf8 ? 1 : 2;
    const bool inkIsDark = terminal.hasColors || background == Background::Light;
    std::optional<QString> code;
    for (const int around : {border, thinBorder}) {
        const Modules modules(rows, around);
        if (terminal.columns && modules.size() * columnsOfModule > *terminal.columns) {
            continue;
        }
        code = terminal.isUtf8 ? halfBlocks(modules, inkIsDark, terminal.hasColors)
                               : pairs(modules, inkIsDark, terminal.hasColors);
        if (code->count(u'\n') < terminal.lines.value_or(INT_MAX)) {
            break;
        }
    }
    return code;
}

} // namespace ostrelle
