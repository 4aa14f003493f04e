#include "ui/Desktop.h"

#include "core/BackgroundWork.h"
#include "core/DesktopOpen.h"
#include "platform/Files.h"
#include "state/Quit.h"

#include <QClipboard>
#include <QGuiApplication>

namespace ostrelle
{

void Desktop::copy(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

void Desktop::openPage(const QString &url)
{
    userInitiatedPool().start([url] { openWithDesktop(url); });
}

void Desktop::openIfThere(const QString &file)
{
    userInitiatedPool().start([file] {
        if (fileExists(file)) {
            openWithDesktop(file);
        }
    });
}

void Desktop::quit()
{
    quitProgram();
}

} // namespace ostrelle

#include "moc_Desktop.cpp"
