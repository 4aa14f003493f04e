#pragma once

#include <QByteArray>
#include <QTemporaryFile>

// Collects what the program prints on standard output while it lives. After a failed test it is
// printed after all.
class PrintedLines
{
public:
    PrintedLines();
    ~PrintedLines();
    PrintedLines(const PrintedLines &) = delete;
    PrintedLines &operator=(const PrintedLines &) = delete;

    QByteArray text() const;

private:
    QTemporaryFile m_file;
    int m_standardOutput;
};
