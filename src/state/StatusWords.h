#pragma once

#include <QObject>
#include <QString>

namespace ostrelle
{

// What one of the status lights says: a word for people, and the name of its colour.
struct Light {
    Q_GADGET
    Q_PROPERTY(QString word MEMBER word)
    Q_PROPERTY(QString color MEMBER color)

public:
    QString word;
    QString color;

    friend bool operator==(const Light &, const Light &) = default;
};

// What the models know, in the words that every face of the program shows. Any thread.
class StatusWords : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // The name of the colour of a status word.
    Q_INVOKABLE static QString colorName(const QString &word);

    Q_INVOKABLE static ostrelle::Light gateway(bool isOnline);
    Q_INVOKABLE static ostrelle::Light voice(bool isEnabled, bool isRunning);
    Q_INVOKABLE static ostrelle::Light statusServer(bool isRunning, bool isPortTaken);
    Q_INVOKABLE static ostrelle::Light lock(bool isSecure);

    // What keeps other devices away from the gateway; empty when nothing does.
    Q_INVOKABLE static QString remoteProblem(bool isTailscaleInstalled, const QString &magicDNSURL);

    // What the pill of a scheduled job says.
    Q_INVOKABLE static ostrelle::Light job(bool isEnabled, const QString &status);
};

} // namespace ostrelle
