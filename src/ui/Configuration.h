#pragma once

#include <QObject>
#include <QProperty>
#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

// What views read of the configuration file. Main thread only.
class Configuration : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        QString watchedURL READ watchedURL WRITE setWatchedURL NOTIFY watchedURLChanged REQUIRED)
    Q_PROPERTY(QString gatewayURL READ gatewayURL NOTIFY gatewayURLChanged)

public:
    using QObject::QObject;

    // The base URL that the gateway monitor watches. The file is loaded again when it changes.
    QString watchedURL() const { return m_watchedURL; }
    void setWatchedURL(const QString &url);

    // The base URL of the configured gateway; the watched one until the file was loaded.
    QString gatewayURL() const { return m_gatewayURL; }

Q_SIGNALS:
    void watchedURLChanged();
    void gatewayURLChanged();

private:
    void load();

    Q_OBJECT_BINDABLE_PROPERTY(Configuration, QString, m_watchedURL,
                               &Configuration::watchedURLChanged)
    Q_OBJECT_BINDABLE_PROPERTY(Configuration, QString, m_gatewayURL,
                               &Configuration::gatewayURLChanged)
};

} // namespace ostrelle
