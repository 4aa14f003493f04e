#pragma once

#include <QString>

namespace ostrelle
{

// Opens a file or a web page with the desktop's default application for it. The application runs
// in a session of its own and outlives this program. A desktop that lacks what opens things is told
// of in a notification; what the application does then is its own. Waits only until it was handed
// over; background threads only.
void openWithDesktop(const QString &fileOrUrl);

} // namespace ostrelle
