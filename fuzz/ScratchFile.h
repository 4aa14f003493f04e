#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// A file in memory with the fuzzer's input, under a name that no input before it has had: what is
// read by QSettings is remembered by name. What is made beside the file goes with it.
class ScratchFile
{
public:
    explicit ScratchFile(const QByteArray &content)
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(content) < 0) {
            std::abort(); // a full disk is no finding
        }
    }

    QString path() const { return m_directory.filePath(QStringLiteral("file")); }

    QByteArray read() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // How many files there are, the first one included.
    qsizetype files() const { return QDir(m_directory.path()).entryList(QDir::Files).size(); }

private:
    QTemporaryDir m_directory{QStringLiteral("/dev/shm/ostrelle-fuzz-XXXXXX")};
};
