#include "core/NotificationManager.h"

#include "core/BackgroundWork.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "platform/SessionServices.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString scriptRunner = u"/usr/bin/osascript"_s;

// Backslashes first: those that protect the quotes must not be doubled.
QString escaped(QString text)
{
    return text.replace(u"\\"_s, u"\\\\"_s).replace(u"\""_s, u"\\\""_s);
}

} // namespace

QString NotificationManager::script(const QString &title, const QString &body)
{
    return u"display notification \""_s + escaped(body) + u"\" with title \""_s + escaped(title) +
           u"\""_s;
}

void NotificationManager::send(const QString &title, const QString &body)
{
    utilityPool().start([title, body] {
        if (fileExists(scriptRunner)) {
            static_cast<void>(
                runChild({.program = scriptRunner, .arguments = {u"-e"_s, script(title, body)}},
                         {.capture = Capture::Nothing}));
        } else if (SessionServices *const services = sessionServices()) {
            services->showNotification(title, body);
        }
    });
}

} // namespace ostrelle
