#pragma once

#include <QString>

#include <optional>

namespace ostrelle
{

// Where the output goes, and what may be sent there. A plain value.
struct Terminal {
    bool isTerminal = false;
    bool hasColors = false;
    bool isUtf8 = true;
    std::optional<int> columns = std::nullopt; // unbounded where absent, as the lines
    std::optional<int> lines = std::nullopt;

    // The standard output, with the user's locale, which main() has set, and NO_COLOR.
    static Terminal ofOutput();

    // The text in a colour by its name, and bold for a heading, where there are colours.
    QString colored(const QString &text, const QString &color) const;
    QString bold(const QString &text) const;

    // The text in characters that the locale has.
    QString spelled(const QString &text) const;
};

// A text from outside as one that a terminal takes for nothing else: without control characters and
// without marks that change the direction of what follows.
QString printable(const QString &text);

// The same, but for line ends and tabs.
QString printableLines(const QString &text);

// The columns that a text takes. Needs the user's locale.
int widthOf(const QString &text);

// As much of it as fits, with a mark where it was cut.
QString elided(const QString &text, int columns, const Terminal &terminal);

// Writes to the standard output, in characters that its locale has; all of it, or ends the program
// with a line on the standard error.
void print(const QString &text, const Terminal &terminal);

// Writes all of it, or as much as there is room for: false then, and errno says why.
bool writeAll(int descriptor, QByteArrayView rest);

// One line on the standard error, after the program's name.
void complain(const QString &text);

} // namespace ostrelle
