#pragma once

#include <QString>

namespace ostrelle
{

// The voice agent's Python environment. One whose installation failed or was cut short never passes
// for a whole one: a marker stands beside it from the first step until the last has ended well.
// What an older version or the user has made counts as whole.
class VoiceVenv
{
public:
    explicit VoiceVenv(QString path);

    const QString &path() const { return m_path; }
    bool exists() const;
    void begin() const;
    void complete() const;

private:
    QString m_path;
    QString m_marker; // is there while the installation has not ended well
};

} // namespace ostrelle
