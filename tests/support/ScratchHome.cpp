#include "support/ScratchHome.h"

#include "settings/PreferredSecretStore.h"
#include "settings/SettingsQueues.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>

ScratchHome::ScratchHome()
{
    QDir(m_directory.path()).mkdir(QStringLiteral(".run"));
    QFile::setPermissions(path(QStringLiteral(".run")),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("HOME", m_directory.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", path(QStringLiteral(".config")).toUtf8());
    qputenv("XDG_RUNTIME_DIR", path(QStringLiteral(".run")).toUtf8());
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

ScratchHome::~ScratchHome()
{
    // What is written later would make the folders anew.
    ostrelle::tokenQueue().waitForDone();
    ostrelle::settingsQueue().waitForDone();
}

QString ScratchHome::path(const QString &relative) const
{
    return relative.isEmpty() ? m_directory.path() : m_directory.filePath(relative);
}

QString ScratchHome::write(const QString &relative, const QByteArray &content) const
{
    const QString file = path(relative);
    QDir().mkpath(QFileInfo(file).path());
    QFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(file));
    }
    return file;
}

QByteArray ScratchHome::read(const QString &relative) const
{
    QFile in(path(relative));
    return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
}

QString ScratchHome::writeScript(const QString &relative, const QByteArray &body) const
{
    // Another file of that name: one that is being started cannot be written to.
    const QString file = write(relative + QStringLiteral(".new"), "#!/bin/sh\n" + body + "\n");
    QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    std::filesystem::rename(file.toStdString(), path(relative).toStdString());
    return path(relative);
}

ostrelle::Settings ScratchHome::settings() const
{
    return ostrelle::Settings(
        {.config = path(QStringLiteral(".ostrelle/config.json")),
         .secrets = secretsFile(),
         .preferences = path(QStringLiteral(".config/ai.duskrell.ostrelle.conf"))});
}

std::optional<QString> ScratchHome::storedToken(const QString &key) const
{
    ostrelle::PreferredSecretStore store(secretsFile());
    return ostrelle::KeychainHelper::getToken(store, key).value_or(std::nullopt);
}

void ScratchHome::storeToken(const QString &token, const QString &key) const
{
    ostrelle::PreferredSecretStore store(secretsFile());
    static_cast<void>(ostrelle::KeychainHelper::saveToken(store, token, key));
}
