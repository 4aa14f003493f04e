#include "platform/LoginItem.h"

#include "platform/FileWriting.h"
#include "platform/SearchPath.h"

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

// What a line made by execLine(), or another entry's, would start.
QString programIn(QString line)
{
    line.replace(u"\\\\"_s, u"\\"_s);
    const bool isQuoted = line.startsWith(u'"');
    QString program;
    for (qsizetype i = isQuoted ? 1 : 0; i < line.size(); ++i) {
        if (line[i] == (isQuoted ? u'"' : u' ')) {
            break;
        }
        i += isQuoted && line[i] == u'\\' && i + 1 < line.size() ? 1 : 0;
        program += line[i];
    }
    return program.replace(u"%%"_s, u"%"_s);
}

constexpr QLatin1StringView execKey = "\nExec="_L1;

QString programOf(const QString &entry)
{
    const qsizetype key = entry.indexOf(execKey);
    return key < 0 ? QString() : programIn(entry.sliced(key + execKey.size()).section(u'\n', 0, 0));
}

bool isSwitchedOff(const QString &entry)
{
    return entry.contains("\nHidden=true"_L1) ||
           entry.contains("\nX-GNOME-Autostart-enabled=false"_L1);
}

bool isSameProgram(const QString &one, const QString &other)
{
    const QString file = QFileInfo(one).canonicalFilePath(); // empty where there is none
    return !file.isEmpty() && file == QFileInfo(other).canonicalFilePath();
}

bool isInBuildFolder(const QString &program)
{
    QDir folder = QFileInfo(program).absoluteDir();
    bool isBuilt = folder.exists(u"CMakeCache.txt"_s);
    while (!isBuilt && !folder.isRoot()) {
        folder.setPath(QDir::cleanPath(folder.filePath(u".."_s)));
        isBuilt = folder.exists(u"CMakeCache.txt"_s);
    }
    return isBuilt;
}

// The program itself unless it is in a build folder and one of its name is installed.
QString installed(const QString &program)
{
    const QString searchPath = qEnvironmentVariable("PATH") + u":/usr/bin"_s;
    if (isInBuildFolder(program)) {
        for (const QString &folder : searchPath.split(u':', Qt::SkipEmptyParts)) {
            const auto found = findProgram(QFileInfo(program).fileName(), folder);
            if (found && !isInBuildFolder(*found)) {
                return *found;
            }
        }
    }
    return program;
}

QByteArray newEntry(const QString &program)
{
    return u"[Desktop Entry]\n"
           u"Type=Application\n"
           u"Name=Ostrelle\n"
           u"Comment=Companion of the local AI-agent gateway\n"
           u"Icon=ai.duskrell.ostrelle\n"
           u"Exec=%1\n"
           u"Terminal=false\n"
           u"X-GNOME-Autostart-enabled=true\n"_s.arg(execLine(program))
               .toUtf8();
}

} // namespace

LoginItem::LoginItem()
    : LoginItem(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                    u"/autostart/ai.duskrell.ostrelle.desktop"_s,
                QCoreApplication::applicationFilePath())
{
}

LoginItem::LoginItem(QString file, QString program)
    : m_file(std::move(file))
    , m_program(std::move(program))
{
}

bool LoginItem::isEnabled() const
{
    const QString entry = content();
    const QString named = programOf(entry);
    return !isSwitchedOff(entry) &&
           (isSameProgram(named, m_program) || isSameProgram(named, installed(m_program)));
}

bool LoginItem::enable()
{
    return QDir().mkpath(QFileInfo(m_file).path()) &&
           replaceFile(fileBehind(m_file), newEntry(installed(m_program))).has_value();
}

bool LoginItem::disable()
{
    return QFile::remove(m_file) || !fileExists(m_file);
}

void LoginItem::bringUpToDate()
{
    QString entry = content();
    const QString named = programOf(entry);
    const QString wanted = installed(m_program);
    const bool isOurs = QFileInfo(named).fileName() == QFileInfo(m_program).fileName();
    const bool isOutdated = !QFileInfo::exists(named) || isInBuildFolder(named);
    if (!isOurs || !isOutdated || isSwitchedOff(entry) || isInBuildFolder(wanted)) {
        return;
    }
    const qsizetype begin = entry.indexOf(execKey) + execKey.size();
    const qsizetype end = entry.indexOf(u'\n', begin);
    entry.replace(begin, (end < 0 ? entry.size() : end) - begin, execLine(wanted));
    static_cast<void>(replaceFile(fileBehind(m_file), entry.toUtf8()));
}

QString LoginItem::content() const
{
    return QString::fromStdString(readFile(m_file, maxEntryBytes).value_or(std::string()));
}

} // namespace ostrelle
