#include "settings/ConfigStore.h"

#include "platform/FileWriting.h"
#include "platform/Log.h"
#include "settings/SettingsQueues.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// People and small programs write that file; more is no configuration.
constexpr std::size_t maxConfigBytes = std::size_t{16} * 1024 * 1024;

std::expected<void, FileProblem> writeConfig(const QString &file, const OstrelleConfig &config)
{
    QDir().mkpath(QFileInfo(file).path());
    return writeInPlace(file, config.encode());
}

struct ConfigFile {
    std::optional<FileProblem> problem;
    std::optional<OstrelleConfig> config; // absent without a file that can be understood
};

ConfigFile contentOf(const QString &file)
{
    const auto understand = [](std::string_view text) {
        return OstrelleConfig::decode({text.data(), static_cast<qsizetype>(text.size())});
    };
    const auto content = readWhole(
        file, maxConfigBytes, [&](std::string_view text) { return understand(text).has_value(); });
    if (!content) {
        return {.problem = content.error(), .config = {}};
    }
    return {.problem = {}, .config = understand(*content)};
}

ConfigFile readConfig(const QString &file)
{
    const bool isFinished = finishWriting(file);
    auto found = contentOf(file);
    if (found.config && found.config->migrate()) {
        static_cast<void>(writeConfig(file, *found.config));
    }
    if (!found.config && !isFinished) {
        found.problem = {FileProblem::Kind::Failed, u"An interrupted write waits for room"_s};
    }
    return found;
}

// So that another one can be written. A file that cannot be understood may hold what nothing else
// does, every saved gateway for one; and so may one that could not be read.
std::expected<void, FileProblem> makeWay(const QString &file, const ConfigFile &found)
{
    using Kind = FileProblem::Kind;
    if (found.config || (found.problem && found.problem->kind == Kind::Missing)) {
        return {};
    }
    if (found.problem && found.problem->kind != Kind::TooLarge) {
        return std::unexpected(*found.problem);
    }
    const auto name = setAside(file);
    if (!name) {
        return std::unexpected(FileProblem{Kind::Failed, u"Cannot be set aside"_s});
    }
    logLine(u"[Ostrelle] "_s + file + u" cannot be understood; it is kept as "_s + *name);
    return {};
}

} // namespace

ConfigStore::ConfigStore(QString file)
    : m_file(std::move(file))
{
    m_current = readConfig(m_file).config.value_or(OstrelleConfig::defaults());
}

std::shared_ptr<ConfigStore> ConfigStore::open(const QString &file)
{
    // Its signals may be on their way on its own thread.
    return {new ConfigStore(file), [](ConfigStore *store) {
                if (store->thread() == QThread::currentThread()) {
                    delete store;
                } else {
                    store->deleteLater();
                }
            }};
}

OstrelleConfig ConfigStore::snapshot()
{
    const std::scoped_lock lock(m_diskMutex);
    const auto found = readConfig(m_file);
    const auto &inFile = found.config;
    if (m_unwritten.isEmpty()) {
        if (inFile) {
            remember(*inFile);
        }
        return inFile.value_or(OstrelleConfig::defaults());
    }
    OstrelleConfig config = inFile.value_or(current());
    for (const Change &apply : m_unwritten) {
        apply(config);
    }
    if (write(config, makeWay(m_file, found))) {
        m_unwritten.clear();
    }
    remember(config);
    return config;
}

OstrelleConfig ConfigStore::current() const
{
    const std::scoped_lock lock(m_mutex);
    return m_current;
}

QFuture<ConfigStore::Changed> ConfigStore::change(const Change &apply, Write mode)
{
    return settingsQueue().run(
        [store = shared_from_this(), apply, mode] { return store->changeNow(apply, mode); });
}

ConfigStore::Changed ConfigStore::changeNow(const Change &apply, Write mode)
{
    const std::scoped_lock lock(m_diskMutex);
    const auto found = readConfig(m_file);
    const auto &inFile = found.config;
    OstrelleConfig before = inFile.value_or(current());
    for (const Change &unwritten : m_unwritten) {
        unwritten(before);
    }
    OstrelleConfig config = before;
    apply(config);
    Changed changed{.config = config, .written = {}};
    if (mode == Write::IfUnderstood && !inFile) {
        changed.written = std::unexpected(FileProblem{FileProblem::Kind::Missing, {}});
    } else if (mode == Write::Always || !m_unwritten.isEmpty() || config != before) {
        if (m_unwritten.isEmpty() || config != before) {
            rememberUnwritten(apply, config);
        }
        changed.written = write(config, makeWay(m_file, found));
        if (changed.written) {
            m_unwritten.clear();
        }
    }
    remember(config);
    return changed;
}

std::expected<void, FileProblem> ConfigStore::write(const OstrelleConfig &config,
                                                    std::expected<void, FileProblem> written)
{
    if (written) {
        written = writeConfig(m_file, config);
    }
    if (!written && !m_toldFailure) {
        logLine(u"[Ostrelle] "_s + m_file + u" not saved: "_s + written.error().text);
    }
    m_toldFailure = !written;
    return written;
}

// Where very many wait for a disk, what they have made of the configuration takes their place.
// Edits from outside no longer count then.
void ConfigStore::rememberUnwritten(const Change &apply, const OstrelleConfig &result)
{
    constexpr qsizetype mostApart = 100;
    if (m_unwritten.size() < mostApart) {
        m_unwritten.append(apply);
    } else {
        m_unwritten = {[result](OstrelleConfig &config) { config = result; }};
    }
}

void ConfigStore::remember(const OstrelleConfig &config)
{
    {
        const std::scoped_lock lock(m_mutex);
        if (m_current == config) {
            return;
        }
        m_current = config;
    }
    QMetaObject::invokeMethod(this, &ConfigStore::changed, Qt::QueuedConnection);
}

OstrelleConfig OstrelleConfig::load()
{
    return readConfig(configPath()).config.value_or(defaults());
}

void OstrelleConfig::save() const
{
    static_cast<void>(writeConfig(configPath(), *this));
}

} // namespace ostrelle

#include "moc_ConfigStore.cpp"
