#pragma once

#include <QString>

namespace ostrelle
{

// The first letter of every word in upper case, all others in lower case: "code-reviewer" becomes
// "Code-Reviewer", "QA" becomes "Qa". A word is what stands between characters that are neither
// letters, digits, combining marks nor apostrophes.
QString capitalizeWords(const QString &text);

} // namespace ostrelle
