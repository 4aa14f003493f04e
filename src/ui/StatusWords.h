#pragma once

#include "core/NamedColor.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

// The colours of status words, for QML. What a colour looks like is Theme's business.
class StatusWords : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE static QString colorName(const QString &word)
    {
        return ostrelle::colorName(statusColor(word));
    }
};

} // namespace ostrelle
