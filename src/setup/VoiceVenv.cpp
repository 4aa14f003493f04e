#include "setup/VoiceVenv.h"

#include "platform/FileWriting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace ostrelle
{

using namespace Qt::StringLiterals;

VoiceVenv::VoiceVenv(QString path)
    : m_path(std::move(path))
    , m_marker(QDir::cleanPath(m_path) + u".incomplete"_s)
{
}

bool VoiceVenv::exists() const
{
    return fileExists(m_path + u"/bin/python"_s) && !fileExists(m_marker);
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
