#include "ui/Desktop.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QUrl>

namespace ostrelle
{

void Desktop::copy(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

void Desktop::openPage(const QString &url)
{
    QDesktopServices::openUrl(QUrl(url));
}

} // namespace ostrelle
