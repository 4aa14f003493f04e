#pragma once

#include "ctl/Shown.h"

namespace ostrelle
{

int showSetup(const Shown &shown);

// These show what is printed while the running program works. It goes on with it when the user no
// longer wants to wait. The status tells whether anything is missing at the end.

// With the administrator's password, from the standard input.
int installEverything(const Shown &shown);
// What needs no password.
int install(const QString &command, const Shown &shown);
int showProgress(const Shown &shown);

} // namespace ostrelle
