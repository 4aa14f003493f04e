#pragma once

#include <QString>

#include <optional>

namespace ostrelle
{

// The voice agent's Python environment. One whose installation failed or was cut short never passes
// for a whole one: a marker stands beside it from the first step until the last has ended well, and
// whoever made it, its Python must run and have what the voice agent requires. Background threads
// only.
class VoiceVenv
{
public:
    VoiceVenv(QString path, const std::optional<QString> &resources);

    const QString &path() const { return m_path; }
    // What pip is given; empty when nothing is required.
    const QString &requirements() const { return m_requirements; }
    bool exists() const;
    void begin() const;
    void complete() const;

private:
    bool works() const;

    QString m_path;
    QString m_requirements;
    QString m_marker; // is there while the installation has not ended well
};

} // namespace ostrelle
