#pragma once

#include <QString>

#include <optional>

namespace ostrelle
{

// The user's preferences: ai.duskrell.ostrelle.conf in the user's configuration directory, an INI
// file. It is read once; from then on no call waits for the disk, and all users see the same. Any
// thread.
class Preferences
{
public:
    Preferences();
    explicit Preferences(QString file);

    // True when the file was missing or well formed and of a sane size.
    bool opens() const;

    // Whether the key has a value of any type.
    bool contains(const QString &key) const;

    // Only true and false are booleans; anything else counts as absent.
    std::optional<bool> boolean(const QString &key) const;
    std::optional<QString> string(const QString &key) const;

    // A change holds at once and is written in the settings queue. A failure to write is silent:
    // the file keeps what it held, and the next change tries again.
    void set(const QString &key, bool value);
    void set(const QString &key, const QString &value);
    void remove(const QString &key);

private:
    // No value: the key is removed.
    void change(const QString &key, const std::optional<QString> &value);

    const QString m_file;
};

} // namespace ostrelle
