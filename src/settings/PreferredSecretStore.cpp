#include "settings/PreferredSecretStore.h"

#include "platform/Log.h"
#include "platform/SessionServices.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString inService = u"the desktop's Secret Service"_s;

// Without the module that knows it, the Secret Service cannot be reached.
template<typename Call>
auto askService(Call call) -> decltype(call(std::declval<SecretStore &>()))
{
    if (SessionServices *const services = sessionServices()) {
        return call(services->secrets());
    }
    return std::unexpected(SecretProblem::Unreachable);
}

template<typename Answer>
bool hasProblem(const Answer &answer, SecretProblem problem)
{
    return !answer && answer.error() == problem;
}

// Whether there is a service that has said something, be it no.
template<typename Answer>
bool isAnswer(const Answer &answer)
{
    return !hasProblem(answer, SecretProblem::Unreachable) &&
           !hasProblem(answer, SecretProblem::NoAnswer);
}

} // namespace

PreferredSecretStore::PreferredSecretStore(const QString &file)
    : m_path(file)
    , m_file(file)
{
}

std::expected<std::optional<QByteArray>, SecretProblem>
PreferredSecretStore::read(const QString &account)
{
    // A successful write to the service empties the file, so what is in the file is the newest.
    const auto kept = m_file.read(account);
    if (kept && *kept) {
        moveToService();
        return kept;
    }
    auto secret = readService(account);
    const bool isNowhere = secret && !*secret;
    return isNowhere || hasProblem(secret, SecretProblem::Unreachable) ? kept : secret;
}

std::expected<std::optional<QByteArray>, SecretProblem>
PreferredSecretStore::readService(const QString &account)
{
    auto secret = askForSecret(account);
    if (isAnswer(secret)) {
        // That there is nothing tells nothing: without a keyring that somebody has set up, the
        // service answers and keeps no secret.
        if (secret && *secret) {
            tellWhere(Place::Service);
            m_file.markServiceUsed();
        }
        if (!m_file.accounts().isEmpty()) {
            moveToService();
        }
    } else if (hasProblem(secret, SecretProblem::Unreachable)) {
        if (m_file.isServiceUsed()) {
            return std::unexpected(SecretProblem::NoAnswer);
        }
        if (m_place == Place::Unknown) {
            tellWhere(Place::File);
        }
    }
    return secret;
}

std::expected<std::optional<QByteArray>, SecretProblem>
PreferredSecretStore::askForSecret(const QString &account)
{
    const quint64 before = writeCount();
    auto secret = askService([&](SecretStore &service) { return service.read(account); });
    const std::scoped_lock lock(m_remembering);
    if (secret && before == m_writeCount) { // else it may be older than what was written
        m_remembered.insert(account, *secret);
    }
    const bool isKnown =
        hasProblem(secret, SecretProblem::Locked) && m_remembered.value(account).has_value();
    return isKnown ? m_remembered.value(account) : secret;
}

std::expected<void, SecretProblem> PreferredSecretStore::giveToService(const QString &account,
                                                                       const QByteArray &secret)
{
    auto written = askService([&](SecretStore &service) { return service.write(account, secret); });
    if (written) {
        const std::scoped_lock lock(m_remembering);
        m_remembered.insert(account, secret);
        ++m_writeCount;
    }
    return written;
}

quint64 PreferredSecretStore::writeCount()
{
    const std::scoped_lock lock(m_remembering);
    return m_writeCount;
}

std::expected<void, SecretProblem> PreferredSecretStore::write(const QString &account,
                                                               const QByteArray &secret)
{
    const std::scoped_lock lock(m_writing);
    const auto written = giveToService(account, secret);
    if (!isAnswer(written)) {
        tellWhere(Place::File);
        return m_file.write(account, secret);
    }
    tellWhere(Place::Service);
    if (!written) {
        return written;
    }
    m_file.markServiceUsed();
    // An older one that stays there would count as the newer one.
    const auto removed = m_file.remove(account);
    return removed || !m_file.accounts().contains(account) ? written : removed;
}

void PreferredSecretStore::unlockForUser()
{
    if (SessionServices *const services = sessionServices()) {
        services->secrets().unlockForUser();
    }
}

QString PreferredSecretStore::whereKept()
{
    switch (m_place.load()) {
    case Place::Service:
        return inService;
    case Place::File:
        return m_path;
    case Place::Unknown:
        break;
    }
    if (m_file.isServiceUsed()) {
        return inService;
    }
    return m_file.accounts().isEmpty() ? QString() : m_path;
}

void PreferredSecretStore::moveToService()
{
    const std::unique_lock lock(m_writing, std::try_to_lock);
    if (!lock) {
        return; // a move is under way, or a write; the next read tries again
    }
    for (const QString &account : m_file.accounts()) {
        const auto kept = m_file.read(account);
        if (!kept || !*kept) {
            continue;
        }
        if (!giveToService(account, **kept)) {
            return;
        }
        static_cast<void>(m_file.remove(account));
        tellWhere(Place::Service);
        m_file.markServiceUsed();
    }
}

void PreferredSecretStore::tellWhere(Place place)
{
    if (m_place.exchange(place) != place) {
        logLine(place == Place::Service
                    ? u"[Ostrelle] Secrets are kept in "_s + inService
                    : u"[Ostrelle] No Secret Service; secrets are kept in "_s + m_path);
    }
}

} // namespace ostrelle
