#pragma once

#include <QThreadPool>

namespace ostrelle
{

// Where what the user has set is written, and what has to be seen with that is read: one piece of
// work after the other, in the order in which it was given. When the program quits, or a library
// ends it, what was given is still done, unless the disk takes longer than a third of a second for
// it. Any thread.
QThreadPool &settingsQueue();

} // namespace ostrelle
