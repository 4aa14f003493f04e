#include "core/Capitalize.h"

#include <QList>

namespace ostrelle
{

namespace
{

bool continuesWord(char32_t character)
{
    return QChar::isLetterOrNumber(character) || QChar::isMark(character) || character == U'\'' ||
           character == U'’';
}

} // namespace

QString capitalizeWords(const QString &text)
{
    QString capitalized;
    capitalized.reserve(text.size());
    bool insideWord = false;
    for (const char32_t character : text.toUcs4()) {
        const bool isLetter = QChar::isLetter(character);
        capitalized +=
            QChar::fromUcs4(insideWord ? QChar::toLower(character) : QChar::toTitleCase(character));
        insideWord = isLetter || (insideWord && continuesWord(character));
    }
    return capitalized;
}

} // namespace ostrelle
