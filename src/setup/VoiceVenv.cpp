#include "setup/VoiceVenv.h"

#include "core/ShellWord.h"
#include "platform/FileWriting.h"
#include "setup/SetupShell.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Fails when a package is not installed that the file in its argument names. Lines that say more
// than a name and versions are pip's business.
const QString hasRequirements = uR"(
import importlib.metadata, re, sys
for line in open(sys.argv[1]):
    required = re.match(r"(\w[\w.-]*)\s*([[<>=!~#][^;]*)?$", line)
    if required:
        importlib.metadata.version(required[1])
)"_s;

} // namespace

VoiceVenv::VoiceVenv(QString path, const std::optional<QString> &resources)
    : m_path(std::move(path))
    , m_marker(QDir::cleanPath(m_path) + u".incomplete"_s)
{
    const QString shipped = resources.value_or(QString()) + u"/voice-agent/requirements.txt"_s;
    if (resources && fileExists(shipped)) {
        m_requirements = shipped;
    }
}

bool VoiceVenv::exists() const
{
    return fileExists(m_path + u"/bin/python"_s) && !fileExists(m_marker) && works();
}

bool VoiceVenv::works() const
{
    const QString check = m_requirements.isEmpty() ? QString() : hasRequirements;
    return runShell(quoted(m_path + u"/bin/python"_s) + u" -I -c "_s + quoted(check) + u' ' +
                        quoted(m_requirements),
                    checkTimeout)
        .success;
}

void VoiceVenv::begin() const
{
    QDir().mkpath(QFileInfo(m_marker).path());
    static_cast<void>(replaceFile(m_marker, std::string_view()));
}

void VoiceVenv::complete() const
{
    QFile::remove(m_marker);
}

} // namespace ostrelle
