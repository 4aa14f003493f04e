#pragma once

#include "core/OstrelleConfig.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

// What views read of the configuration file. Main thread only.
class Configuration : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // The base URL of the configured gateway, loaded afresh. The argument is what the gateway
    // monitor watches: a binding that names it loads again whenever that changes.
    Q_INVOKABLE static QString gatewayURL(const QString & /*watched*/)
    {
        return OstrelleConfig::load().gateway.url;
    }
};

} // namespace ostrelle
