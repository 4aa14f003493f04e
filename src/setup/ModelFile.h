#pragma once

#include "setup/SetupShell.h"

namespace ostrelle
{

// The directory for what the voice agent needs beside its program.
QString voiceDataDirectory();

// A file of the Kokoro speech model, which is downloaded once. Half a file never passes for a whole
// one: it is removed when the download fails, and while a download runs, a marker stands beside the
// file, which is still there after the program was killed.
class ModelFile
{
public:
    static ModelFile speechModel() { return ModelFile(QStringLiteral("kokoro-v1.0.onnx")); }
    static ModelFile voiceData() { return ModelFile(QStringLiteral("voices-v1.0.bin")); }

    bool exists() const;

    // Blocks: background threads only.
    ShellResult download() const;

private:
    explicit ModelFile(const QString &name);

    QString m_path;
    QString m_address;
    QString m_marker; // is there while the file is downloaded
};

} // namespace ostrelle
