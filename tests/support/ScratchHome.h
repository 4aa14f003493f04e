#pragma once

#include "settings/Settings.h"

#include <QByteArray>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>

// A home directory of the test's own, with runtime and configuration directories to match and no
// session bus, for as long as the object lives. Construct it before anything that looks for a home.
class ScratchHome
{
public:
    ScratchHome();
    ~ScratchHome();
    ScratchHome(const ScratchHome &) = delete;
    ScratchHome &operator=(const ScratchHome &) = delete;

    // The absolute path of something below the home.
    QString path(const QString &relative = {}) const;

    // Writes a file below the home, with its directories.
    QString write(const QString &relative, const QByteArray &content) const;

    // A file's content; null when it cannot be read.
    QByteArray read(const QString &relative) const;

    bool exists(const QString &relative) const { return QFileInfo::exists(path(relative)); }

    // Writes an executable shell script below the home; `body` follows "#!/bin/sh".
    QString writeScript(const QString &relative, const QByteArray &body) const;

    // The settings that this home keeps, opened anew.
    ostrelle::Settings settings() const;

    // The token under a gateway's URL or KeychainHelper::activeKey; absent when there is none.
    std::optional<QString> storedToken(const QString &key) const;
    void storeToken(const QString &token, const QString &key) const;

private:
    QString secretsFile() const { return path(QStringLiteral(".ostrelle/secrets.json")); }

    QTemporaryDir m_directory;
};
