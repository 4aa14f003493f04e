#include "settings/Preferences.h"

#include "platform/Files.h"
#include "platform/NeverDestroyed.h"
#include "settings/SettingsQueue.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>
#include <mutex>
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

// QSettings tells of a format error only once for as long as the file does not change.
bool isReadable(const QString &file)
{
    const auto content = readFile(file, maxPreferenceBytes);
    if (!content) {
        return content.error().kind == FileProblem::Kind::Missing;
    }
    return std::ranges::all_of(QByteArray::fromStdString(*content).split('\n'), isWellFormed);
}

bool replaceFile(const QString &from, const QString &to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

QVariantHash contentOf(const QSettings &settings)
{
    QVariantHash content;
    for (const QString &key : settings.allKeys()) {
        content.insert(key, settings.value(key).toString());
    }
    return content;
}

using Changes = QHash<QString, std::optional<QString>>; // by key; nothing: removed

// The file's content with the changes, beside the file.
QVariantHash writeDraft(const QString &draftFile, const QSettings &current, const Changes &changes)
{
    QFile::remove(draftFile);
    // A key for another service is among the preferences.
    static_cast<void>(writeInPlace(draftFile, std::string_view(), ownerOnly));
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

// QSettings reports success on a full disk and leaves a cut file. So the new content is written
// beside the old one, read back, and takes its place only when nothing is missing. False when it
// has not. Settings queue only.
bool rewrite(const QString &preferences, const Changes &changes)
{
    if (!isReadable(preferences)) {
        return false;
    }
    const QFileInfo info(preferences);
    const QString file = info.exists() ? info.canonicalFilePath() : preferences; // a link stays one
    const QSettings current(file, QSettings::IniFormat);
    if (current.status() != QSettings::NoError) {
        return false;
    }
    QDir().mkpath(QFileInfo(file).path());
    const QString draftFile = file + u".new"_s;
    const QVariantHash wanted = writeDraft(draftFile, current, changes);
    // Under a new name each time, because QSettings remembers what a file of that name held.
    static int rewrites = 0;
    const QString writtenFile = file + u".written"_s + QString::number(++rewrites);
    if (!replaceFile(draftFile, writtenFile)) {
        return false;
    }
    const bool replaced = contentOf(QSettings(writtenFile, QSettings::IniFormat)) == wanted &&
                          replaceFile(writtenFile, file);
    if (!replaced) {
        QFile::remove(writtenFile);
    }
    return replaced;
}

struct Content {
    bool opens = false;
    QVariantHash values;
    Changes unwritten = {};
    bool isWriteQueued = false;
};

Content read(const QString &file)
{
    if (!isReadable(file)) {
        return {};
    }
    const QSettings settings(file, QSettings::IniFormat);
    Content content{.opens = settings.status() == QSettings::NoError, .values = {}};
    for (const QString &key : settings.allKeys()) {
        content.values.insert(key, settings.value(key));
    }
    return content;
}

// What each file holds, changes that are still to be written included.
class Contents
{
public:
    static Contents &instance()
    {
        static NeverDestroyed<Contents> contents;
        return contents.object();
    }

    template<typename Use>
    auto use(const QString &file, Use use)
    {
        const std::scoped_lock lock(m_mutex);
        auto content = m_contents.find(file);
        if (content == m_contents.end()) {
            content = m_contents.insert(file, read(file));
        }
        return use(*content);
    }

private:
    std::mutex m_mutex;
    QHash<QString, Content> m_contents; // by file; protected by the mutex
};

// Writes what has not been written yet, earlier failures included.
void write(const QString &file)
{
    const Changes changes = Contents::instance().use(file, [](Content &content) {
        content.isWriteQueued = false;
        return content.unwritten;
    });
    if (!rewrite(file, changes)) {
        return; // the next change tries again
    }
    Contents::instance().use(file, [&](Content &content) {
        content.unwritten.removeIf([&](const Changes::iterator &change) {
            return changes.contains(change.key()) && changes[change.key()] == change.value();
        });
    });
}

QVariant valueIn(const QString &file, const QString &key)
{
    return Contents::instance().use(file, [&](const Content &it) { return it.values.value(key); });
}

} // namespace

Preferences::Preferences()
    : Preferences(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                  u"/ai.duskrell.ostrelle.conf"_s)
{
}

Preferences::Preferences(QString file)
    : m_file(std::move(file))
{
}

bool Preferences::opens() const
{
    return Contents::instance().use(m_file, [](const Content &content) { return content.opens; });
}

bool Preferences::contains(const QString &key) const
{
    return valueIn(m_file, key).isValid();
}

std::optional<bool> Preferences::boolean(const QString &key) const
{
    const QString value = valueIn(m_file, key).toString();
    if (value == "true"_L1) {
        return true;
    }
    if (value == "false"_L1) {
        return false;
    }
    return std::nullopt;
}

std::optional<QString> Preferences::string(const QString &key) const
{
    const QVariant value = valueIn(m_file, key);
    return value.isValid() ? std::optional(value.toString()) : std::nullopt;
}

void Preferences::set(const QString &key, bool value)
{
    change(key, value ? u"true"_s : u"false"_s);
}

void Preferences::set(const QString &key, const QString &value)
{
    change(key, value);
}

void Preferences::remove(const QString &key)
{
    change(key, std::nullopt);
}

void Preferences::change(const QString &key, const std::optional<QString> &value)
{
    Contents::instance().use(m_file, [&](Content &content) {
        if (value) {
            content.values.insert(key, *value);
        } else {
            content.values.remove(key);
        }
        content.unwritten.insert(key, value);
        if (!std::exchange(content.isWriteQueued, true)) {
            settingsQueue().start([file = m_file] { write(file); });
        }
    });
}

} // namespace ostrelle
