#include "support/PrintedLines.h"

#include "platform/Log.h"

#include <QTest>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace
{

void finish()
{
    std::fflush(stdout);
    ostrelle::finishLog(std::chrono::seconds(10));
}

} // namespace

PrintedLines::PrintedLines()
    : m_standardOutput(::dup(STDOUT_FILENO))
{
    finish();
    m_file.open();
    ::dup2(m_file.handle(), STDOUT_FILENO);
}

PrintedLines::~PrintedLines()
{
    finish();
    ::dup2(m_standardOutput, STDOUT_FILENO);
    ::close(m_standardOutput);
    if (QTest::currentTestFailed()) {
        std::fputs(text().constData(), stdout);
    }
}

QByteArray PrintedLines::text() const
{
    finish();
    // By the handle that is there, for tests that leave no descriptor; and without moving its
    // position, which the printing shares.
    QByteArray text(m_file.size(), Qt::Uninitialized);
    const ssize_t read = ::pread(m_file.handle(), text.data(), static_cast<size_t>(text.size()), 0);
    text.truncate(std::max<ssize_t>(read, 0));
    return text;
}
