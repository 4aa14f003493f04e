#pragma once

#include <QString>

#include <optional>

namespace ostrelle
{

// The user's preferences: ai.duskrell.ostrelle.conf in the user's configuration directory, an INI
// file. Every call reads or writes the file, so that all users of it see the same. Any thread;
// writes wait for each other.
class Preferences
{
public:
    Preferences();
    explicit Preferences(QString file);

    // True when the file is missing or well formed and of a sane size.
    bool opens() const;

    // Whether the key has a value of any type.
    bool contains(const QString &key) const;

    // Only true and false are booleans; anything else counts as absent.
    std::optional<bool> boolean(const QString &key) const;
    std::optional<QString> string(const QString &key) const;

    // False when the file could not be written; what it held before is still there then.
    bool set(const QString &key, bool value);
    bool set(const QString &key, const QString &value);
    bool remove(const QString &key);

private:
    const QString m_file;
};

} // namespace ostrelle
