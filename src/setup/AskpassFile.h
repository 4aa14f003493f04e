#pragma once

#include <QString>

#include <mutex>
#include <optional>

namespace ostrelle
{

// The administrator's password as a shell word: between single quotes.
QString escapedPassword(const QString &password);

// The script that tells sudo the administrator's password while an installation runs. Only its
// owner can read it, and it is gone with this object at the latest. Any thread.
class AskpassFile
{
public:
    AskpassFile() = default;
    ~AskpassFile() { remove(); }
    Q_DISABLE_COPY_MOVE(AskpassFile)

    // Absent when the script could not be written, or was removed before.
    std::optional<QString> write(const QString &password);

    // For good: a later write() does nothing.
    void remove();

private:
    std::mutex m_mutex;
    // protected by m_mutex
    QString m_path;
    bool m_isRemoved = false;
};

} // namespace ostrelle
