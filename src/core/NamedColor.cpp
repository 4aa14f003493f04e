#include "core/NamedColor.h"

#include <QHash>

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString colorName(NamedColor color)
{
    switch (color) {
    case NamedColor::TiffanyBlue:
        return u"tiffanyBlue"_s;
    case NamedColor::Pink:
        return u"pink"_s;
    case NamedColor::Purple:
        return u"purple"_s;
    case NamedColor::Teal:
        return u"teal"_s;
    case NamedColor::Green:
        return u"green"_s;
    case NamedColor::Yellow:
        return u"yellow"_s;
    case NamedColor::Blue:
        return u"blue"_s;
    case NamedColor::Mint:
        return u"mint"_s;
    case NamedColor::Indigo:
        return u"indigo"_s;
    case NamedColor::Red:
        return u"red"_s;
    case NamedColor::Grey:
        return u"grey"_s;
    }
    return {};
}

NamedColor statusColor(const QString &word)
{
    static const QHash<QString, NamedColor> colors = {
        {u"green"_s, NamedColor::Green},    {u"healthy"_s, NamedColor::Green},
        {u"online"_s, NamedColor::Green},   {u"running"_s, NamedColor::Green},
        {u"active"_s, NamedColor::Green},   {u"success"_s, NamedColor::Green},
        {u"yellow"_s, NamedColor::Yellow},  {u"warning"_s, NamedColor::Yellow},
        {u"idle"_s, NamedColor::Yellow},    {u"starting"_s, NamedColor::Yellow},
        {u"pending"_s, NamedColor::Yellow}, {u"red"_s, NamedColor::Red},
        {u"error"_s, NamedColor::Red},      {u"offline"_s, NamedColor::Red},
        {u"failed"_s, NamedColor::Red},     {u"stopped"_s, NamedColor::Red},
        {u"blue"_s, NamedColor::Blue},      {u"processing"_s, NamedColor::Blue},
        {u"busy"_s, NamedColor::Blue},      {u"working"_s, NamedColor::Blue},
    };
    return colors.value(word.toLower(), NamedColor::Grey);
}

} // namespace ostrelle
