#pragma once

#include <QString>

#include <mutex>
#include <optional>

namespace ostrelle
{

// The script that tells sudo the administrator's password while an installation runs. Only its
// owner can read it. It is removed together with this object at the latest, and at exit even if
// this object still lives; what a killed program has left is removed at the next start. Any thread.
class AskpassFile
{
public:
    AskpassFile() = default;
    ~AskpassFile() { close(); }
    Q_DISABLE_COPY_MOVE(AskpassFile)

    // Removes the script of an earlier run of the program; does nothing after write().
    void removeLeftover();

    // The script's path; absent when it could not be written, and after close().
    std::optional<QString> write(const QString &password);

    void remove();

    // Removes the script for good: a later write() does nothing.
    void close();

private:
    std::mutex m_mutex;
    // protected by m_mutex
    bool m_isWritten = false; // at least once
    bool m_isClosed = false;
};

} // namespace ostrelle
