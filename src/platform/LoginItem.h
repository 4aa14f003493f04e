#pragma once

#include "platform/Files.h"

#include <QString>

namespace ostrelle
{

// Starting with the user's desktop session: the program's entry in the autostart folder. It names
// the installed program, also while one from a build folder runs. Any thread, one at a time.
class LoginItem
{
public:
    LoginItem();
    LoginItem(QString file, QString program);

    // False also for an entry that the desktop's own settings have switched off, and for one whose
    // program is gone or another one.
    bool isEnabled() const;

    std::expected<void, FileProblem> enable();
    std::expected<void, FileProblem> disable();

    // Has an entry that names a place where the program no longer is, or a build folder, name the
    // installed one.
    void bringUpToDate();

private:
    QString content() const; // empty without an entry

    const QString m_file;
    const QString m_program; // that runs
};

} // namespace ostrelle
