#include "platform/LoginItem.h"

#include "platform/Files.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr std::size_t maxEntryBytes = std::size_t{64} * 1024;

// The program's path as one argument of an Exec line: quoted for the line, then once more for the
// text values of such files; a per cent sign would begin a field code.
QString execLine(const QString &program)
{
    QString argument;
    for (const QChar c : program) {
        if (u"\"`$\\"_s.contains(c)) {
            argument += u'\\';
        }
        argument += c == u'%' ? u"%%"_s : QString(c);
    }
    return u"\""_s + argument.replace(u"\\"_s, u"\\\\"_s) + u"\""_s;
}

QByteArray entry()
{
    return u"[Desktop Entry]\n"
           u"Type=Application\n"
           u"Name=Ostrelle\n"
           u"Comment=Companion of the local AI-agent gateway\n"
           u"Icon=ai.duskrell.ostrelle\n"
           u"Exec=%1\n"
           u"Terminal=false\n"
           u"X-GNOME-Autostart-enabled=true\n"_s
               .arg(execLine(QCoreApplication::applicationFilePath()))
               .toUtf8();
}

} // namespace

LoginItem::LoginItem()
    : LoginItem(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                u"/autostart/ai.duskrell.ostrelle.desktop"_s)
{
}

LoginItem::LoginItem(QString file)
    : m_file(std::move(file))
{
}

bool LoginItem::isEnabled() const
{
    const auto content = readFile(m_file, maxEntryBytes);
    return content && !content->contains("\nHidden=true") &&
           !content->contains("\nX-GNOME-Autostart-enabled=false");
}

bool LoginItem::enable()
{
    return QDir().mkpath(QFileInfo(m_file).path()) && writeInPlace(m_file, entry()).has_value();
}

bool LoginItem::disable()
{
    return QFile::remove(m_file) || !fileExists(m_file);
}

} // namespace ostrelle
