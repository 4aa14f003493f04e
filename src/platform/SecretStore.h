#pragma once

#include <QByteArray>
#include <QString>

#include <expected>
#include <optional>

namespace ostrelle
{

enum class SecretProblem {
    Unreachable, // there is no store of this kind
    NoAnswer,    // there is one, and it does not answer
    Locked,      // it would have to ask the user first
    Refused,     // it answered with an error
};

QString toString(SecretProblem problem);

// One way of keeping secrets, each under an account name. Calls block for a few seconds at most and
// may come from any thread but the main one; none of them ever raises a prompt, but for the one
// that says so.
class SecretStore
{
public:
    virtual ~SecretStore() = default;
    SecretStore(const SecretStore &) = delete;
    SecretStore &operator=(const SecretStore &) = delete;

    // The secret's bytes, or nothing when there is none under that account.
    virtual std::expected<std::optional<QByteArray>, SecretProblem>
    read(const QString &account) = 0;

    // Stores or replaces; afterwards there is exactly one secret under that account.
    virtual std::expected<void, SecretProblem> write(const QString &account,
                                                     const QByteArray &secret) = 0;

    // Has the user asked to unlock what is locked, if anything is, and waits for the answer, two
    // minutes at most. What came of it the next call tells. Only for what the user has just asked
    // for.
    virtual void unlockForUser() {}

    // For people; empty while that is not known. May read the disk.
    virtual QString whereKept() { return {}; }

protected:
    SecretStore() = default;
};

} // namespace ostrelle
