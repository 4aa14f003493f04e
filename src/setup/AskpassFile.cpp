#include "setup/AskpassFile.h"

#include "core/ShellWord.h"
#include "platform/FileWriting.h"
#include "platform/NeverDestroyed.h"
#include "platform/Paths.h"

#include <QFile>

#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString scriptName = u"/ostrelle-askpass.sh"_s;

// The script that exists now. Also removes it when the program ends in a way that never destroys
// the script's owner.
class CurrentScript
{
public:
    static CurrentScript &instance()
    {
        static NeverDestroyed<CurrentScript> script;
        return script.object();
    }

    CurrentScript()
    {
        const auto atEnd = [] { instance().remove(); };
        std::atexit(atEnd);
        std::at_quick_exit(atEnd);
    }

    void set(const QString &path)
    {
        const std::scoped_lock lock(m_mutex);
        m_name = QFile::encodeName(path);
    }

    void remove()
    {
        const std::scoped_lock lock(m_mutex);
        if (const QByteArray name = std::exchange(m_name, {}); !name.isEmpty()) {
            ::unlink(name.constData());
        }
    }

private:
    std::mutex m_mutex;
    QByteArray m_name; // protected by m_mutex
};

// The command that prints the password. echo would take a leading "-" for an option, and some make
// something else of a backslash.
QString printing(const QString &password)
{
    const bool isPlain = !password.startsWith(u'-') && !password.contains(u'\\');
    return (isPlain ? u"echo "_s : u"printf '%s\\n' "_s) + quoted(password);
}

} // namespace

void AskpassFile::removeLeftover()
{
    const std::scoped_lock lock(m_mutex);
    if (m_isWritten) {
        return;
    }
    for (const QString &place : privateTemporaryPlaces()) {
        QFile::remove(place + scriptName);
    }
}

std::optional<QString> AskpassFile::write(const QString &password)
{
    const std::scoped_lock lock(m_mutex);
    const auto directory = m_isClosed ? std::nullopt : privateTemporaryDirectory();
    if (!directory) {
        return std::nullopt;
    }
    m_isWritten = true;
    const QString path = *directory + scriptName;
    CurrentScript::instance().set(path);
    const QString script = u"#!/bin/bash\n"_s + printing(password);
    constexpr mode_t ownerRuns = 0700;
    return createAnew(path, script.toUtf8(), ownerRuns) ? std::optional(path) : std::nullopt;
}

void AskpassFile::remove()
{
    CurrentScript::instance().remove();
}

void AskpassFile::close()
{
    const std::scoped_lock lock(m_mutex);
    m_isClosed = true;
    if (m_isWritten) {
        CurrentScript::instance().remove();
    }
}

} // namespace ostrelle
