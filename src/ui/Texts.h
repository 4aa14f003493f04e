#pragma once

#include "core/OneLine.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

// What views make of texts from outside.
class Texts : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // For a word or a name.
    Q_INVOKABLE static QString oneLine(const QString &text) { return ostrelle::oneLine(text); }

    // For help on hover, which is no page.
    Q_INVOKABLE static QString help(const QString &text) { return ostrelle::oneLine(text, 1000); }
};

} // namespace ostrelle
