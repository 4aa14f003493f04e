#include "platform/Preferences.h"

#include "platform/Files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>
#include <mutex>

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

QVariant valueIn(const QString &file, const QString &key)
{
    return isReadable(file) ? QSettings(file, QSettings::IniFormat).value(key) : QVariant();
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

// A write reads the file first: without this, one of two at a time would be lost.
std::mutex &writes()
{
    static std::mutex mutex;
    return mutex;
}

// QSettings reports success on a full disk and leaves a cut file. So the new content is written
// beside the old one, read back, and takes its place only when nothing is missing.
template<typename Change>
bool rewrite(const QString &preferences, Change change)
{
    const std::scoped_lock lock(writes());
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
    QFile::remove(draftFile);
    // A key for another service is among the preferences.
    static_cast<void>(writeInPlace(draftFile, std::string_view(), ownerOnly));
    QVariantHash wanted;
    {
        QSettings draft(draftFile, QSettings::IniFormat);
        for (const QString &key : current.allKeys()) {
            draft.setValue(key, current.value(key));
        }
        change(draft);
        wanted = contentOf(draft);
    }
    // Under another name, because QSettings remembers what it wrote to a file of this one.
    const QString writtenFile = file + u".written"_s;
    if (!replaceFile(draftFile, writtenFile)) {
        return false;
    }
    if (contentOf(QSettings(writtenFile, QSettings::IniFormat)) != wanted) {
        QFile::remove(writtenFile);
        return false;
    }
    return replaceFile(writtenFile, file);
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
    return isReadable(m_file) &&
           QSettings(m_file, QSettings::IniFormat).status() == QSettings::NoError;
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

bool Preferences::set(const QString &key, bool value)
{
    return rewrite(m_file, [&](QSettings &draft) { draft.setValue(key, value); });
}

bool Preferences::set(const QString &key, const QString &value)
{
    return rewrite(m_file, [&](QSettings &draft) { draft.setValue(key, value); });
}

bool Preferences::remove(const QString &key)
{
    return rewrite(m_file, [&](QSettings &draft) { draft.remove(key); });
}

} // namespace ostrelle
