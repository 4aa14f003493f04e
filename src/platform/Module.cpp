#include "platform/Module.h"

#include "platform/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QPluginLoader>

#include <dlfcn.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString libraryDirectory()
{
    Dl_info place{};
    static const char anything = 0;
    ::dladdr(&anything, &place);
    return QFileInfo(QFile::decodeName(place.dli_fname)).absolutePath();
}

} // namespace

QObject *loadModule(const QString &name)
{
    QPluginLoader loader(libraryDirectory() + u"/lib"_s + name + u".so"_s);
    QObject *object = loader.instance();
    if (object == nullptr) {
        logLine(u"[Ostrelle] "_s + loader.errorString());
    }
    return object;
}

} // namespace ostrelle
