#include "setup/VoiceVenv.h"

#include "platform/Files.h"

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
    static_cast<void>(writeInPlace(m_marker, QByteArray()));
}

void VoiceVenv::complete() const
{
    QFile::remove(m_marker);
}

} // namespace ostrelle
