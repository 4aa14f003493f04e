#include "setup/ModelFile.h"

#include "core/ShellWord.h"
#include "platform/FileWriting.h"
#include "platform/Paths.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString releaseAddress =
    u"https://github.com/thewh1teagle/kokoro-onnx/releases/download/model-files-v1.0/"_s;

// Waits until the content would survive a power cut.
bool isOnDisk(const QString &path)
{
    const Descriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return file && ::fsync(file.get()) == 0;
}

} // namespace

QString voiceDataDirectory()
{
    return homeDirectory() + u"/.ostrelle/data"_s;
}

ModelFile::ModelFile(const QString &name)
    : m_path(voiceDataDirectory() + u"/models/"_s + name)
    , m_address(releaseAddress + name)
    , m_marker(m_path + u".incomplete"_s)
{
}

bool ModelFile::exists() const
{
    return fileExists(m_path) && !fileExists(m_marker);
}

ShellResult ModelFile::download() const
{
    static_cast<void>(replaceFile(m_marker, std::string_view()));
    ShellResult result = runShell(u"curl -fSL -o "_s + quoted(m_path) + u' ' + quoted(m_address));
    if (result.success && !isOnDisk(m_path)) {
        result = {.success = false, .output = u"The file could not be written"_s};
    }
    if (!result.success) {
        QFile::remove(m_path);
    }
    if (result.success || !fileExists(m_path)) {
        QFile::remove(m_marker);
    }
    return result;
}

} // namespace ostrelle
