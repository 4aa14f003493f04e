#pragma once

#include "platform/Files.h"

#include <QByteArray>

#include <optional>

namespace ostrelle
{

// The pipe through which a child's output comes.
class OutputPipe
{
public:
    // Absent when there are no descriptors left.
    static std::optional<OutputPipe> open();

    int readEnd() const { return m_pipe.readEnd.get(); } // -1 after the end of the output
    int writeEnd() const { return m_pipe.writeEnd.get(); }
    void closeWriteEnd() { m_pipe.writeEnd = Descriptor(); }
    bool ended() const { return !m_pipe.readEnd; }

    // What is there now, as far as a pipe holds. Does not wait.
    QByteArray read();

    // Kills who still has the other end: only the child can have handed it on, so that is no
    // stranger. The write end here must be closed.
    void killHolders() const;

private:
    explicit OutputPipe(Pipe pipe);

    Pipe m_pipe;
};

} // namespace ostrelle
