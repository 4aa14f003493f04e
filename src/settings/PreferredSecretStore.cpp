#include "settings/PreferredSecretStore.h"

#include "platform/Log.h"
#include "platform/Paths.h"
#include "platform/SessionServices.h"
#include "settings/SecretFile.h"

#include <atomic>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Without the module that knows it, the Secret Service cannot be reached.
template<typename Call>
auto askService(Call call) -> decltype(call(std::declval<SecretStore &>()))
{
    if (SessionServices *const services = sessionServices()) {
        return call(services->secrets());
    }
    return std::unexpected(SecretProblem::Unreachable);
}

// A secret that was saved while the service was away stays readable once it is back.
class PreferredStore final : public SecretStore
{
public:
    explicit PreferredStore(QString file)
        : m_path(std::move(file))
        , m_file(m_path)
    {
    }

    // A successful write to the service empties the file, so what is in the file is the newest.
    std::expected<std::optional<QByteArray>, SecretProblem> read(const QString &account) override
    {
        const auto kept = m_file.read(account);
        if (kept && *kept) {
            moveToService(account, **kept);
            return kept;
        }
        const auto secret = askService([&](SecretStore &service) { return service.read(account); });
        // What is in neither tells nothing new about where secrets are kept.
        if (m_place == Place::Unknown || (secret && *secret)) {
            tellWhere(reachable(secret) ? Place::Service : Place::File);
        }
        return reachable(secret) ? secret : kept;
    }

    std::expected<void, SecretProblem> write(const QString &account,
                                             const QByteArray &secret) override
    {
        const auto written =
            askService([&](SecretStore &service) { return service.write(account, secret); });
        if (!reachable(written)) {
            tellWhere(Place::File);
            return m_file.write(account, secret);
        }
        tellWhere(Place::Service);
        if (written) {
            static_cast<void>(m_file.remove(account));
        }
        return written;
    }

    std::expected<void, SecretProblem> remove(const QString &account) override
    {
        const auto removed =
            askService([&](SecretStore &service) { return service.remove(account); });
        const auto removedFromFile = m_file.remove(account);
        return reachable(removed) ? removed : removedFromFile;
    }

private:
    enum class Place { Unknown, Service, File };

    template<typename Answer>
    static bool reachable(const Answer &answer)
    {
        return answer || answer.error() != SecretProblem::Unreachable;
    }

    void moveToService(const QString &account, const QByteArray &secret)
    {
        const bool moved = askService([&](SecretStore &service) {
                               return service.write(account, secret);
                           }).has_value();
        if (moved) {
            static_cast<void>(m_file.remove(account));
        }
        tellWhere(moved ? Place::Service : Place::File);
    }

    void tellWhere(Place place)
    {
        if (m_place.exchange(place) != place) {
            logLine(place == Place::Service
                        ? u"[Ostrelle] Secrets are kept in the desktop's Secret Service"_s
                        : u"[Ostrelle] No Secret Service; secrets are kept in "_s + m_path);
        }
    }

    const QString m_path;
    SecretFile m_file;
    std::atomic<Place> m_place = Place::Unknown;
};

} // namespace

SecretStore &secretStore()
{
    static PreferredStore store(homeDirectory() + u"/.ostrelle/secrets.json"_s);
    return store;
}

} // namespace ostrelle
