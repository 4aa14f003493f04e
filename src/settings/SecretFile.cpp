#include "settings/SecretFile.h"

#include "platform/FileWriting.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

namespace ostrelle
{

namespace
{

constexpr std::size_t maxSecretBytes = std::size_t{4} * 1024 * 1024;

constexpr QLatin1StringView serviceUsedKey("usesSecretService");

} // namespace

std::expected<QJsonObject, SecretFile::LoadProblem> SecretFile::load() const
{
    const auto content = readFile(m_path, maxSecretBytes);
    if (!content) {
        if (content.error().kind == FileProblem::Kind::Missing) {
            return QJsonObject();
        }
        return std::unexpected(LoadProblem::Unreadable);
    }
    const auto document = QJsonDocument::fromJson(QByteArray::fromStdString(*content));
    if (!document.isObject()) {
        return std::unexpected(LoadProblem::NotUnderstood);
    }
    return document.object();
}

std::expected<void, SecretProblem> SecretFile::save(const QJsonObject &secrets) const
{
    QDir().mkpath(QFileInfo(m_path).path());
    if (!replaceFile(fileBehind(m_path), QJsonDocument(secrets).toJson())) {
        return std::unexpected(SecretProblem::Refused);
    }
    return {};
}

std::expected<std::optional<QByteArray>, SecretProblem> SecretFile::read(const QString &account)
{
    const std::scoped_lock lock(m_mutex);
    const auto secrets = load();
    if (!secrets) {
        return std::unexpected(SecretProblem::Refused);
    }
    const QJsonValue secret = secrets->value(account);
    return secret.isString() ? std::optional(secret.toString().toUtf8()) : std::nullopt;
}

std::expected<void, SecretProblem> SecretFile::write(const QString &account,
                                                     const QByteArray &secret)
{
    const std::scoped_lock lock(m_mutex);
    auto secrets = load();
    if (!secrets) {
        if (secrets.error() == LoadProblem::Unreadable || !setAside(m_path)) {
            return std::unexpected(SecretProblem::Refused);
        }
        secrets = QJsonObject();
    }
    secrets->insert(account, QString::fromUtf8(secret));
    return save(*secrets);
}

std::expected<void, SecretProblem> SecretFile::remove(const QString &account)
{
    const std::scoped_lock lock(m_mutex);
    auto secrets = load();
    if (!secrets) {
        return std::unexpected(SecretProblem::Refused);
    }
    if (!secrets->contains(account)) {
        return {};
    }
    secrets->remove(account);
    return save(*secrets);
}

QStringList SecretFile::accounts()
{
    const std::scoped_lock lock(m_mutex);
    const QJsonObject secrets = load().value_or(QJsonObject());
    QStringList accounts = secrets.keys();
    accounts.removeIf([&](const QString &account) { return !secrets[account].isString(); });
    return accounts;
}

bool SecretFile::isServiceUsed()
{
    const std::scoped_lock lock(m_mutex);
    return load().value_or(QJsonObject()).value(serviceUsedKey).toBool();
}

void SecretFile::markServiceUsed()
{
    const std::scoped_lock lock(m_mutex);
    auto secrets = load();
    if (!secrets || secrets->value(serviceUsedKey).toBool()) {
        return;
    }
    secrets->insert(serviceUsedKey, true);
    static_cast<void>(save(*secrets)); // the next secret from the service tries again
}

} // namespace ostrelle
