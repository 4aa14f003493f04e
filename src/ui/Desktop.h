#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

// What views ask of the desktop. Main thread only.
class Desktop : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // Replaces what is on the clipboard with this text.
    Q_INVOKABLE static void copy(const QString &text);

    // Opens a web page with the user's browser, without waiting for it.
    Q_INVOKABLE static void openPage(const QString &url);

    // Opens a file or an application if it is there, without waiting for it.
    Q_INVOKABLE static void openIfThere(const QString &file);

    // Ends the program in a moment, and the voice agent first.
    Q_INVOKABLE static void quit();
};

} // namespace ostrelle
