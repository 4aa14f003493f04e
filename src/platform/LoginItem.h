#pragma once

#include <QString>

namespace ostrelle
{

// Starting with the user's desktop session: the program's entry in the autostart folder. Any
// thread, one at a time.
class LoginItem
{
public:
    LoginItem();
    explicit LoginItem(QString file);

    // False also for an entry that the desktop's own settings have switched off.
    bool isEnabled() const;

    // False when the entry could not be written or removed.
    bool enable();
    bool disable();

private:
    const QString m_file;
};

} // namespace ostrelle
