#pragma once

#include "settings/SecretFile.h"

#include <QHash>

#include <atomic>
#include <mutex>

namespace ostrelle
{

// Secrets in the desktop's Secret Service while one can be reached, else in a file that only the
// user can read; what the file holds moves to the service once that is there. One log line says
// which of the two, and one more whenever that changes. What the service has once given or taken is
// remembered until the program ends, for when it is locked again: some stores ask the user for each
// item anew.
class PreferredSecretStore final : public SecretStore
{
public:
    explicit PreferredSecretStore(const QString &file);

    // Nothing is only what the service, or the file where there is none, has said: a service that
    // has kept secrets, if only in an earlier run, and is not there, or a file that cannot be read,
    // is a problem.
    std::expected<std::optional<QByteArray>, SecretProblem> read(const QString &account) override;

    // To the file where the service does not answer, so that the secret is not lost.
    std::expected<void, SecretProblem> write(const QString &account,
                                             const QByteArray &secret) override;

    void unlockForUser() override;

    QString whereKept() override;

private:
    enum class Place { Unknown, Service, File };

    std::expected<std::optional<QByteArray>, SecretProblem> readService(const QString &account);
    std::expected<std::optional<QByteArray>, SecretProblem> askForSecret(const QString &account);
    std::expected<void, SecretProblem> giveToService(const QString &account,
                                                     const QByteArray &secret);
    quint64 writeCount();
    void moveToService();
    void tellWhere(Place place);

    const QString m_path;
    SecretFile m_file;
    std::mutex m_writing; // a move to the service and a write must not cross
    std::mutex m_remembering;
    QHash<QString, std::optional<QByteArray>> m_remembered; // protected by it
    quint64 m_writeCount = 0;                               // protected by it
    std::atomic<Place> m_place = Place::Unknown;
};

} // namespace ostrelle
