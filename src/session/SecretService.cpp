#include "session/SecretService.h"

#include "session/SessionBus.h"

#include <QDeadlineTimer>

#include <libsecret/secret.h>

namespace ostrelle
{

namespace
{

constexpr const char *serviceName = "ai.duskrell.ostrelle";

// For the user's answer to a prompt.
constexpr std::chrono::minutes userPatience(2);

// Items are found by their attributes alone, so that one made with another tool counts too.
const SecretSchema tokenSchema = {
    .name = "ai.duskrell.ostrelle.Token",
    .flags = SECRET_SCHEMA_DONT_MATCH_NAME,
    .attributes = {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                   {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                   {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
    .reserved = 0,
    .reserved1 = nullptr,
    .reserved2 = nullptr,
    .reserved3 = nullptr,
    .reserved4 = nullptr,
    .reserved5 = nullptr,
    .reserved6 = nullptr,
    .reserved7 = nullptr,
};

struct HashTableUnref {
    void operator()(GHashTable *table) const { g_hash_table_unref(table); }
};
struct SecretValueUnref {
    void operator()(SecretValue *value) const { secret_value_unref(value); }
};
struct ObjectListFree {
    void operator()(GList *objects) const { g_list_free_full(objects, g_object_unref); }
};
using Attributes = std::unique_ptr<GHashTable, HashTableUnref>;
using Objects = std::unique_ptr<GList, ObjectListFree>;

class Failure
{
public:
    ~Failure() { g_clear_error(&m_error); }
    Failure() = default;
    Q_DISABLE_COPY_MOVE(Failure)

    GError **out() { return &m_error; }

    // The bus or the service went away, or the deadline passed; anything else is an answer.
    SecretProblem problem() const
    {
        const bool answered =
            m_error && g_dbus_error_is_remote_error(m_error) &&
            !g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) &&
            !g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) &&
            !g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY);
        return answered ? SecretProblem::Refused : SecretProblem::Unreachable;
    }

private:
    GError *m_error = nullptr;
};

Attributes attributesOf(const QString &account)
{
    return Attributes(secret_attributes_build(&tokenSchema, "service", serviceName, "account",
                                              account.toUtf8().constData(), nullptr));
}

Attributes attributesOfAll()
{
    return Attributes(secret_attributes_build(&tokenSchema, "service", serviceName, nullptr));
}

// One conversation with the service: the connection, and the calls made over it.
class KeyringConversation
{
public:
    static std::expected<std::unique_ptr<KeyringConversation>, SecretProblem> begin()
    {
        if (const auto bus = sessionBus(); !bus) {
            secret_service_disconnect(); // it may hold the connection to a bus that is gone
            return std::unexpected(bus.error() == BusProblem::NoAnswer
                                       ? SecretProblem::NoAnswer
                                       : SecretProblem::Unreachable);
        }
        auto conversation = std::unique_ptr<KeyringConversation>(new KeyringConversation);
        if (const auto connected = conversation->connect(); !connected) {
            return std::unexpected(conversation->deadlinePassed() ? SecretProblem::NoAnswer
                                                                  : connected.error());
        }
        return conversation;
    }

    bool deadlinePassed() const { return g_cancellable_is_cancelled(m_calls.cancellable()) != 0; }

    // The items, without unlocking anything; locked ones come without their secret.
    std::expected<Objects, SecretProblem> search(const Attributes &attributes)
    {
        const auto flags =
            static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS);
        const auto result = m_calls.finish([&](GAsyncReadyCallback callback, gpointer data) {
            secret_service_search(m_service.get(), &tokenSchema, attributes.get(), flags,
                                  m_calls.cancellable(), callback, data);
        });
        Failure failure;
        Objects items(secret_service_search_finish(m_service.get(), result.get(), failure.out()));
        if (*failure.out()) {
            return std::unexpected(lost(failure));
        }
        return items;
    }

    // Not one that is locked, for which the user would be asked.
    void deleteItem(SecretItem *item)
    {
        if (secret_item_get_locked(item)) {
            return;
        }
        m_calls.finish([&](GAsyncReadyCallback callback, gpointer data) {
            secret_item_delete(item, m_calls.cancellable(), callback, data);
        });
    }

    std::expected<GObjectPtr<SecretCollection>, SecretProblem> defaultCollection()
    {
        const auto result = m_calls.finish([&](GAsyncReadyCallback callback, gpointer data) {
            secret_collection_for_alias(m_service.get(), SECRET_COLLECTION_DEFAULT,
                                        SECRET_COLLECTION_NONE, m_calls.cancellable(), callback,
                                        data);
        });
        Failure failure;
        GObjectPtr<SecretCollection> collection(
            secret_collection_for_alias_finish(result.get(), failure.out()));
        if (*failure.out()) {
            return std::unexpected(lost(failure));
        }
        if (!collection) {
            // There is no keyring yet; one can only be made by asking the user.
            return std::unexpected(SecretProblem::Unreachable);
        }
        return collection;
    }

    // Raises a prompt. True when something is unlocked. When the time is over the prompt is left
    // alone: gnome-keyring 42 dies of one that is dismissed while it is shown.
    bool unlock(const Objects &objects, QDeadlineTimer until)
    {
        if (until.hasExpired()) {
            return false;
        }
        const BoundedCalls patience(std::chrono::milliseconds(until.remainingTime()));
        const auto answer = std::make_shared<Answer>();
        secret_service_unlock(m_service.get(), objects.get(), nullptr,
                              &KeyringConversation::keepAnswer,
                              std::make_unique<std::shared_ptr<Answer>>(answer).release());
        while (!*answer && !g_cancellable_is_cancelled(patience.cancellable())) {
            g_main_context_iteration(g_main_context_get_thread_default(), TRUE);
        }
        return *answer &&
               secret_service_unlock_finish(m_service.get(), answer->get(), nullptr, nullptr) > 0;
    }

    std::expected<void, SecretProblem> store(const QString &account, const QByteArray &secret)
    {
        const Attributes attributes = attributesOf(account);
        const std::unique_ptr<SecretValue, SecretValueUnref> value(
            secret_value_new(secret.constData(), secret.size(), "text/plain"));
        const QByteArray label = "Ostrelle: " + account.toUtf8();
        const auto result = m_calls.finish([&](GAsyncReadyCallback callback, gpointer data) {
            secret_service_store(m_service.get(), &tokenSchema, attributes.get(),
                                 SECRET_COLLECTION_DEFAULT, label.constData(), value.get(),
                                 m_calls.cancellable(), callback, data);
        });
        Failure failure;
        if (!secret_service_store_finish(m_service.get(), result.get(), failure.out())) {
            return std::unexpected(lost(failure));
        }
        return {};
    }

private:
    using Answer = GObjectPtr<GAsyncResult>;

    KeyringConversation() = default;

    static void keepAnswer(GObject * /*source*/, GAsyncResult *result, gpointer shared)
    {
        const std::unique_ptr<std::shared_ptr<Answer>> answer(
            static_cast<std::shared_ptr<Answer> *>(shared));
        (*answer)->reset(G_ASYNC_RESULT(g_object_ref(result)));
    }

    std::expected<void, SecretProblem> connect()
    {
        const auto result = m_calls.finish([&](GAsyncReadyCallback callback, gpointer data) {
            secret_service_get(SECRET_SERVICE_OPEN_SESSION, m_calls.cancellable(), callback, data);
        });
        Failure failure;
        m_service.reset(secret_service_get_finish(result.get(), failure.out()));
        if (!m_service) {
            return std::unexpected(failure.problem());
        }
        return {};
    }

    // libsecret keeps its connection, and with it the name of a service that has restarted since;
    // the next conversation looks for the service anew.
    static SecretProblem lost(const Failure &failure)
    {
        const SecretProblem problem = failure.problem();
        if (problem == SecretProblem::Unreachable) {
            secret_service_disconnect();
        }
        return problem;
    }

    BoundedCalls m_calls;
    GObjectPtr<::SecretService> m_service;
};

// A service that was restarted is found at the second attempt; one that hangs is not tried again.
template<typename Work>
auto converse(Work work) -> decltype(work(std::declval<KeyringConversation &>()))
{
    for (bool again = true;; again = false) {
        const auto conversation = KeyringConversation::begin();
        if (!conversation) {
            return std::unexpected(conversation.error());
        }
        const auto answer = work(**conversation);
        const bool lost = !answer && answer.error() == SecretProblem::Unreachable;
        if (lost && (*conversation)->deadlinePassed()) {
            return std::unexpected(SecretProblem::NoAnswer);
        }
        if (!lost || !again) {
            return answer;
        }
    }
}

// Absent where the item is locked.
std::optional<QByteArray> secretOf(SecretItem *item)
{
    const std::unique_ptr<SecretValue, SecretValueUnref> value(secret_item_get_secret(item));
    if (!value) {
        return std::nullopt;
    }
    gsize size = 0;
    const char *bytes = secret_value_get(value.get(), &size);
    return QByteArray(bytes, static_cast<qsizetype>(size));
}

std::expected<std::optional<QByteArray>, SecretProblem> readIn(KeyringConversation &conversation,
                                                               const QString &account)
{
    const auto items = conversation.search(attributesOf(account));
    if (!items) {
        return std::unexpected(items.error());
    }
    bool locked = false;
    for (const GList *entry = items->get(); entry; entry = entry->next) {
        auto *item = static_cast<SecretItem *>(entry->data);
        if (auto secret = secretOf(item)) {
            return secret;
        }
        locked = locked || secret_item_get_locked(item);
    }
    if (locked) {
        return std::unexpected(SecretProblem::Locked);
    }
    return std::nullopt;
}

// Items that another tool has made, with attributes of its own beside these, are not replaced by
// storing. They would be read in place of what was stored.
void removeOthers(KeyringConversation &conversation, const QString &account,
                  const QByteArray &stored)
{
    const auto items = conversation.search(attributesOf(account));
    if (!items) {
        return;
    }
    for (const GList *entry = items->get(); entry; entry = entry->next) {
        auto *item = static_cast<SecretItem *>(entry->data);
        if (secretOf(item) != stored) {
            conversation.deleteItem(item);
        }
    }
}

std::expected<void, SecretProblem> writeIn(KeyringConversation &conversation,
                                           const QString &account, const QByteArray &secret)
{
    // Storing into a locked collection would raise a prompt, so its state is asked for first.
    const auto collection = conversation.defaultCollection();
    if (!collection) {
        return std::unexpected(collection.error());
    }
    if (secret_collection_get_locked(collection->get())) {
        return std::unexpected(SecretProblem::Locked);
    }
    const auto stored = conversation.store(account, secret);
    if (stored) {
        removeOthers(conversation, account, secret);
    }
    return stored;
}

// False when the user does not want to, or not in time; the items would only be the next question.
std::expected<bool, SecretProblem> unlockCollection(KeyringConversation &conversation,
                                                    QDeadlineTimer until)
{
    auto collection = conversation.defaultCollection();
    if (!collection) {
        return std::unexpected(collection.error());
    }
    if (!secret_collection_get_locked(collection->get())) {
        return true;
    }
    const Objects object(g_list_prepend(nullptr, collection->release()));
    return conversation.unlock(object, until);
}

std::expected<void, SecretProblem> unlockItems(KeyringConversation &conversation,
                                               QDeadlineTimer until)
{
    const auto items = conversation.search(attributesOfAll());
    if (!items) {
        return std::unexpected(items.error());
    }
    GList *locked = nullptr;
    for (const GList *entry = items->get(); entry; entry = entry->next) {
        auto *item = static_cast<SecretItem *>(entry->data);
        if (secret_item_get_locked(item)) {
            locked = g_list_append(locked, g_object_ref(item));
        }
    }
    if (const Objects objects(locked); objects) {
        conversation.unlock(objects, until);
    }
    return {};
}

} // namespace

std::expected<std::optional<QByteArray>, SecretProblem> SecretService::read(const QString &account)
{
    return converse(
        [&](KeyringConversation &conversation) { return readIn(conversation, account); });
}

std::expected<void, SecretProblem> SecretService::write(const QString &account,
                                                        const QByteArray &secret)
{
    return converse(
        [&](KeyringConversation &conversation) { return writeIn(conversation, account, secret); });
}

// One after the other: most items are unlocked together with their collection. In two
// conversations, because the user takes longer over the first question than the service may over an
// answer.
void SecretService::unlockForUser()
{
    const QDeadlineTimer until(userPatience); // also while somebody else asks
    const std::scoped_lock lock(m_unlocking);
    const auto isUnlocked = converse(
        [&](KeyringConversation &conversation) { return unlockCollection(conversation, until); });
    if (isUnlocked.value_or(false)) {
        static_cast<void>(converse(
            [&](KeyringConversation &conversation) { return unlockItems(conversation, until); }));
    }
}

} // namespace ostrelle
