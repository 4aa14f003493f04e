#pragma once

#include "platform/SecretStore.h"

#include <QJsonObject>
#include <QStringList>

#include <mutex>
#include <utility>

namespace ostrelle
{

// Secrets in one JSON object of account names and texts, in a file of mode 0600 from the moment it
// is created; a link to it stays one. A member that is no text is none of them. A file that cannot
// be understood is set aside as "<name>.broken", or the next free name after it, never overwritten.
class SecretFile final : public SecretStore
{
public:
    explicit SecretFile(QString path)
        : m_path(std::move(path))
    {
    }

    std::expected<std::optional<QByteArray>, SecretProblem> read(const QString &account) override;
    std::expected<void, SecretProblem> write(const QString &account,
                                             const QByteArray &secret) override;
    std::expected<void, SecretProblem> remove(const QString &account);

    // All that have a secret here; none while the file cannot be read.
    QStringList accounts();

    // Whether secrets are known to be kept in the Secret Service. Outlives the program, and the
    // service: what is not there may have been in it.
    bool isServiceUsed();
    void markServiceUsed();

private:
    enum class LoadProblem { Unreadable, NotUnderstood };

    std::expected<QJsonObject, LoadProblem> load() const;
    std::expected<void, SecretProblem> save(const QJsonObject &secrets) const;

    const QString m_path;
    std::mutex m_mutex; // one reader or writer at a time
};

} // namespace ostrelle
