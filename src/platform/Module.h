#pragma once

#include <QObject>
#include <QString>

namespace ostrelle
{

// Loads lib<name>.so, which stands beside the library that this function is in, and returns the
// object that it provides; the object lives as long as the process. Null, with one log line, when
// that cannot be had. Needs no application object. Any thread.
QObject *loadModule(const QString &name);

// The same, as the interface that the object implements.
template<typename Interface>
Interface *loadModuleAs(const QString &name)
{
    return qobject_cast<Interface *>(loadModule(name));
}

} // namespace ostrelle
