#include "settings/Preferences.h"

#include "platform/FileWriting.h"
#include "settings/SettingsQueues.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Far beyond what a person's preferences need; a larger file is taken as broken, not read.
constexpr std::size_t maxPreferenceBytes = std::size_t{1024} * 1024;

bool isWellFormed(QByteArrayView line)
{
    line = line.trimmed();
    return line.isEmpty() || line.front() == ';' || line.front() == '#' || line.contains('=') ||
           (line.front() == '[' && line.back() == ']');
}

bool isReadable(const QString &file)
{
    const auto content = readFile(file, maxPreferenceBytes);
    if (!content) {
        return content.error().kind == FileProblem::Kind::Missing;
    }
    return std::ranges::all_of(QByteArray::fromStdString(*content).split('\n'), isWellFormed);
}

QVariantHash contentOf(const QSettings &settings)
{
    QVariantHash content;
    for (const QString &key : settings.allKeys()) {
        content.insert(key, settings.value(key).toString());
    }
    return content;
}

// The file's content with the changes, beside the file.
QVariantHash writeDraft(const QString &draftFile, const QSettings &current,
                        const QHash<QString, std::optional<QString>> &changes)
{
    // A key for another service is among the preferences.
    static_cast<void>(createAnew(draftFile, QByteArray(), ownerOnly));
    QSettings draft(draftFile, QSettings::IniFormat);
    for (const QString &kept : current.allKeys()) {
        draft.setValue(kept, current.value(kept));
    }
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        if (change.value()) {
            draft.setValue(change.key(), **change);
        } else {
            draft.remove(change.key());
        }
    }
    return contentOf(draft);
}

// Of a run that was killed; all of the preferences are in them.
void removeLeftovers(const QString &written)
{
    constexpr int longestWrite = 60; // seconds; a younger one may be another process's
    const QFileInfo named(written);
    const QDateTime old = QDateTime::currentDateTime().addSecs(-longestWrite);
    static const QRegularExpression number(uR"(\.written\d+$)"_s);
    for (const QFileInfo &left : named.dir().entryInfoList({named.fileName() + u'*'})) {
        if (number.match(left.fileName()).hasMatch() && left.lastModified() < old) {
            QFile::remove(left.filePath());
        }
    }
}

// Slashes divide keys into groups, and several in a row count as one: two agents would share a key.
QString asKeyPart(QString id)
{
    return id.replace(u'%', u"%25"_s).replace(u'/', u"%2F"_s).replace(u'\\', u"%5C"_s);
}

} // namespace

TextPreference preference::geminiAPIKey()
{
    return {.key = u"geminiAPIKey"_s};
}

TextPreference preference::customAgentName(const QString &agentId, const QString &otherwise)
{
    return {.key = u"agents.customName."_s + asKeyPart(agentId), .otherwise = otherwise};
}

TextPreference preference::customAgentEmoji(const QString &agentId, const QString &otherwise)
{
    return {.key = u"agents.customEmoji."_s + asKeyPart(agentId), .otherwise = otherwise};
}

Preferences::Preferences(QString file, std::chrono::milliseconds pause)
    : m_file(std::move(file))
    , m_pause(pause)
    , m_content(read())
{
}

bool Preferences::opens() const
{
    const std::scoped_lock lock(m_mutex);
    return m_content.opens;
}

bool Preferences::contains(QLatin1StringView key) const
{
    return valueOf(key).isValid();
}

bool Preferences::value(const BooleanPreference &preference) const
{
    const QString value = valueOf(preference.key).toString();
    return value == "true"_L1 || (value != "false"_L1 && preference.otherwise);
}

QString Preferences::value(const TextPreference &preference) const
{
    const QVariant value = valueOf(preference.key);
    return value.isValid() ? value.toString() : preference.otherwise;
}

void Preferences::set(const BooleanPreference &preference, bool value)
{
    change(preference.key, value ? u"true"_s : u"false"_s);
}

void Preferences::set(const TextPreference &preference, const QString &value)
{
    change(preference.key, value);
}

void Preferences::remove(const TextPreference &preference)
{
    change(preference.key, std::nullopt);
}

QFuture<bool> Preferences::stored()
{
    return settingsQueue().run([self = shared_from_this()] { return self->write(); });
}

QVariant Preferences::valueOf(const QString &key) const
{
    const std::scoped_lock lock(m_mutex);
    return m_content.values.value(key);
}

void Preferences::change(const QString &key, const std::optional<QString> &value)
{
    const std::scoped_lock lock(m_mutex);
    if (value) {
        m_content.values.insert(key, *value);
    } else {
        m_content.values.remove(key);
    }
    m_content.unwritten.insert(key, value);
    queueWrite();
}

// With the mutex locked.
void Preferences::queueWrite()
{
    if (!std::exchange(m_content.isWriteQueued, true)) {
        settingsQueue().start([self = shared_from_this()] { self->write(); });
    }
}

Preferences::Content Preferences::read()
{
    if (!isReadable(m_file)) {
        return {};
    }
    const QSettings settings(m_file, QSettings::IniFormat);
    Content content{.opens = understands(settings)};
    for (const QString &key : settings.allKeys()) {
        content.values.insert(key, settings.value(key));
    }
    return content;
}

// QSettings tells of a format error only once for as long as the file does not change.
bool Preferences::understands(const QSettings &settings)
{
    const QDateTime changed = QFileInfo(settings.fileName()).lastModified();
    if (settings.status() != QSettings::NoError) {
        m_notUnderstood = changed;
    }
    return m_notUnderstood != changed;
}

// Writes what has not been written yet, earlier failures included; false when it is not in the file
// then. Settings queue only.
bool Preferences::write()
{
    const Changes changes = [this] {
        const std::scoped_lock lock(m_mutex);
        m_content.isWriteQueued = false;
        return m_content.unwritten;
    }();
    if (changes.isEmpty()) {
        return true;
    }
    if (!rewrite(changes)) {
        writeLater();
        return false;
    }
    const std::scoped_lock lock(m_mutex);
    m_content.unwritten.removeIf([&](const Changes::iterator &change) {
        return changes.contains(change.key()) && changes[change.key()] == change.value();
    });
    return true;
}

// There is a timer on the main thread only; one at a time, however many attempts fail.
void Preferences::writeLater()
{
    {
        const std::scoped_lock lock(m_mutex);
        if (std::exchange(m_content.isAttemptPlanned, true)) {
            return;
        }
    }
    const auto again = [waiting = weak_from_this()] {
        if (const auto self = waiting.lock()) {
            const std::scoped_lock lock(self->m_mutex);
            self->m_content.isAttemptPlanned = false;
            self->queueWrite();
        }
    };
    if (QCoreApplication *const application = QCoreApplication::instance()) {
        QMetaObject::invokeMethod(application, [application, again, pause = m_pause] {
            QTimer::singleShot(pause, application, again);
        });
    }
}

// QSettings reports success on a full disk and leaves a cut file. So the new content is written
// beside the old one, read back, and takes its place only when nothing is missing. False when it
// has not.
bool Preferences::rewrite(const Changes &changes)
{
    if (!isReadable(m_file)) {
        return false;
    }
    const QString file = fileBehind(m_file); // a link stays one
    const QSettings current(file, QSettings::IniFormat);
    if (!understands(current)) {
        return false;
    }
    QDir().mkpath(QFileInfo(file).path());
    const QString draftFile = file + u".new"_s;
    const QVariantHash wanted = writeDraft(draftFile, current, changes);
    QFile::remove(draftFile + u".lock"_s); // in case QSettings could not
    // Under a new name each time, because QSettings remembers what a file of that name held.
    static std::atomic<int> rewrites = 0;
    const QString written = file + u".written"_s;
    removeLeftovers(written);
    const QString writtenFile = written + QString::number(++rewrites);
    if (!moveOver(draftFile, writtenFile)) {
        return false;
    }
    if (contentOf(QSettings(writtenFile, QSettings::IniFormat)) != wanted) {
        QFile::remove(writtenFile);
        return false;
    }
    return moveOver(writtenFile, file).has_value();
}

} // namespace ostrelle
