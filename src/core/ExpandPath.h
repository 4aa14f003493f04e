#pragma once

#include <QString>

namespace ostrelle
{

// A path that begins with "~/" continues in the user's home directory; every other path, one with a
// user's name after the tilde included, is returned as it stands.
QString expandPath(const QString &path);

} // namespace ostrelle
