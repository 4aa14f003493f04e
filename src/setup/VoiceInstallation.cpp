#include "core/ExpandPath.h"
#include "core/ShellWord.h"
#include "setup/ModelFile.h"
#include "setup/SetupManager.h"
#include "setup/SetupShell.h"
#include "setup/VoiceVenv.h"

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// What curl says at its end, without the progress meter before it.
QString reasonOf(const QString &output)
{
    return output.mid(std::max<qsizetype>(0, output.lastIndexOf("curl: ("_L1)));
}

} // namespace

// Prepares everything that the voice agent needs, in the background.
class SetupManager::VoiceInstallation
{
public:
    void run();

    const ProgressFeed::Writer feed;
    const std::optional<QString> resources;
    const Settings settings;

private:
    bool saveConfig(const ConfigStore::Change &change);
    void writeConfig();
    void prepareData();
    void copyIfMissing(const QString &name) const;
    void downloadModel();
    void createVenv();
    bool installRequirements(const VoiceVenv &venv) const; // false when pip failed
    void finish();
};

void SetupManager::VoiceInstallation::run()
{
    if (feed.isManagerGone()) {
        return;
    }
    for (const auto step : {&VoiceInstallation::writeConfig, &VoiceInstallation::prepareData,
                            &VoiceInstallation::downloadModel, &VoiceInstallation::createVenv,
                            &VoiceInstallation::finish}) {
        if (!programEnds()) {
            (this->*step)();
        }
    }
}

bool SetupManager::VoiceInstallation::saveConfig(const ConfigStore::Change &change)
{
    const auto written =
        settings.config->change(change, ConfigStore::Write::Always).result().written;
    if (written) {
        feed.publish([](SetupManager &manager) { manager.m_hasConfig = true; });
    } else {
        feed.addStatus(u"WARNING: Config not saved — "_s + written.error().text);
    }
    return written.has_value();
}

void SetupManager::VoiceInstallation::writeConfig()
{
    feed.addStatus(u"Creating config…"_s);
    if (saveConfig([](const OstrelleConfig &) {})) {
        feed.addStatus(u"Config saved to "_s + settings.config->file());
    }
}

void SetupManager::VoiceInstallation::prepareData()
{
    feed.addStatus(u"Setting up voice data directory…"_s);
    const QString data = voiceDataDirectory();
    runShell(u"mkdir -p "_s + quoted(data + u"/models"_s) + u' ' + quoted(data + u"/sounds"_s));
    if (resources) {
        copyIfMissing(u"/config.yaml"_s);
        copyIfMissing(u"/hey_vorn_mac.ppn"_s);
        copyIfMissing(u"/sounds/thinking.wav"_s);
    }
}

void SetupManager::VoiceInstallation::copyIfMissing(const QString &name) const
{
    const QString source = *resources + u"/voice-agent"_s + name;
    const QString destination = voiceDataDirectory() + name;
    if (fileExists(source) && !fileExists(destination)) {
        runShell(u"cp "_s + quoted(source) + u' ' + quoted(destination));
    }
}

void SetupManager::VoiceInstallation::downloadModel()
{
    if (const ModelFile model = ModelFile::speechModel(); !model.exists()) {
        feed.addStatus(u"Downloading Kokoro TTS model (~310MB)…"_s);
        const ShellResult result = model.download();
        constexpr qsizetype shownCharacters = 100;
        feed.addStatus(result.success ? u"Kokoro model downloaded"_s
                                      : u"WARNING: Kokoro download failed — "_s +
                                            reasonOf(result.output).left(shownCharacters));
    }
    if (const ModelFile voices = ModelFile::voiceData(); !voices.exists()) {
        feed.addStatus(u"Downloading voice data (~27MB)…"_s);
        feed.addStatus(voices.download().success ? u"Voice data downloaded"_s
                                                 : u"WARNING: Voice data download failed"_s);
    }
    // The next checks find out whether that is true.
    feed.publish([](SetupManager &manager) { manager.m_hasModels = true; });
}

void SetupManager::VoiceInstallation::createVenv()
{
    const VoiceVenv venv(expandPath(settings.config->current().voice.venvPath), resources);
    if (venv.exists()) {
        return;
    }
    venv.begin();
    feed.addStatus(u"Creating Python venv…"_s);
    // Nothing in the working directory is taken for a part of Python.
    const ShellResult result =
        runShell(u"PYTHONSAFEPATH=1 python3 -m venv "_s + quoted(venv.path()));
    if (!result.success) {
        feed.addStatus(u"ERROR: "_s + result.output);
    } else {
        feed.addStatus(u"Venv created"_s);
        if (installRequirements(venv)) {
            venv.complete();
        }
    }
    feed.publish([exists = venv.exists()](SetupManager &manager) { manager.m_hasVenv = exists; });
}

bool SetupManager::VoiceInstallation::installRequirements(const VoiceVenv &venv) const
{
    if (venv.requirements().isEmpty()) {
        return true;
    }
    feed.addStatus(u"Installing voice dependencies (this takes a few minutes)…"_s);
    const ShellResult result = runShell(quoted(venv.path() + u"/bin/pip"_s) + u" install -r "_s +
                                        quoted(venv.requirements()) + u" 2>&1"_s);
    constexpr qsizetype shownCharacters = 300;
    feed.addStatus(result.success ? u"✓ Dependencies installed"_s
                                  : u"WARNING: pip install failed — "_s +
                                        result.output.right(shownCharacters));
    return result.success;
}

void SetupManager::VoiceInstallation::finish()
{
    saveConfig([](OstrelleConfig &config) { config.voice.enabled = true; });
    feed.addStatus(u"Setup complete!"_s);
    feed.publish([](SetupManager &manager) {
        manager.runChecks([&manager] {
            manager.m_isRunning = false;
            manager.m_isComplete = true;
        });
    });
}

void SetupManager::run()
{
    if (!m_isRunning) {
        m_problem = QString();
        installVoice();
    }
}

void SetupManager::installVoice()
{
    if (m_isRunning) {
        return;
    }
    m_isRunning = true;
    m_statusMessages.clear();
    userInitiatedPool().start([installation = VoiceInstallation{
                                   .feed = m_feed.writer(),
                                   .resources = m_surroundings.resources,
                                   .settings = m_settings}]() mutable { installation.run(); });
}

} // namespace ostrelle
