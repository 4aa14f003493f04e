#pragma once

#include <QDateTime>
#include <QFuture>
#include <QHash>
#include <QString>
#include <QVariantHash>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

class QSettings;

namespace ostrelle
{

// A preference: its key in the file, and what holds while the file has no value of its kind there.
struct BooleanPreference {
    QLatin1StringView key;
    bool otherwise;
};
struct TextPreference {
    QString key;
    QString otherwise = {};
};

// All of them.
namespace preference
{
inline constexpr BooleanPreference projectTrackingEnabled{
    QLatin1StringView("projectTrackingEnabled"), true};
inline constexpr BooleanPreference autoStartVoice{QLatin1StringView("autoStartVoice"), false};
inline constexpr BooleanPreference voiceEnabled{QLatin1StringView("voiceEnabled"), false};
inline constexpr BooleanPreference setupWasShown{QLatin1StringView("setupWasShown"), false};
inline constexpr BooleanPreference useMagicDNS{QLatin1StringView("useMagicDNS"), true};

// Travels in the pairing code.
TextPreference geminiAPIKey();

// The user's own name and emoji for an agent; `otherwise` is the agent's own.
TextPreference customAgentName(const QString &agentId, const QString &otherwise = {});
TextPreference customAgentEmoji(const QString &agentId, const QString &otherwise = {});
} // namespace preference

// The user's preferences, in an INI file. It is read once; from then on no call waits for the disk,
// and all users of the object see the same. Any thread. Make it with std::make_shared.
class Preferences : public std::enable_shared_from_this<Preferences>
{
public:
    // What could not be written is tried again after `pause`.
    explicit Preferences(QString file, std::chrono::milliseconds pause = std::chrono::seconds(30));

    // False when the file was neither missing nor well formed and of a sane size.
    bool opens() const;

    // Whether the key has a value of any type.
    bool contains(QLatin1StringView key) const;

    // Only true and false are booleans; anything else counts as absent.
    bool value(const BooleanPreference &preference) const;
    QString value(const TextPreference &preference) const;

    // A change holds at once and is written in the settings queue. A failure to write is silent:
    // the file keeps what it held, and after the pause, or with the next change, it is tried again.
    // stored() tells of it.
    void set(const BooleanPreference &preference, bool value);
    void set(const TextPreference &preference, const QString &value);
    void remove(const TextPreference &preference);

    // Whether all that was set before is in the file, once the settings queue has come so far. What
    // an earlier attempt left is tried again for it.
    QFuture<bool> stored();

private:
    using Changes = QHash<QString, std::optional<QString>>; // by key; nothing: removed

    struct Content {
        bool opens = false;
        QVariantHash values = {};
        Changes unwritten = {};
        bool isWriteQueued = false;
        bool isAttemptPlanned = false;
    };

    Content read();
    bool understands(const QSettings &settings);
    QVariant valueOf(const QString &key) const;
    void change(const QString &key, const std::optional<QString> &value);
    void queueWrite();
    bool write();
    void writeLater();
    bool rewrite(const Changes &changes);

    const QString m_file;
    const std::chrono::milliseconds m_pause;
    // When the file was last changed that QSettings did not understand. Settings queue only.
    std::optional<QDateTime> m_notUnderstood;
    mutable std::mutex m_mutex;
    Content m_content; // protected by it
};

} // namespace ostrelle
