#pragma once

#include <QColor>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

// Colours in which texts can be read. In C++, because every label of a page that opens asks.
class TextColors : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // The same colour, so much lighter that a small text in it can be read (4.5 to 1) on the
    // ground, also where that has a wash of the text's colour; white where no lighter one can.
    Q_INVOKABLE static QColor legible(const QColor &color, const QColor &ground, qreal washOpacity);
};

} // namespace ostrelle
