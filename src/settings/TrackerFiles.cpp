#include "core/ExpandPath.h"
#include "platform/FileWriting.h"
#include "platform/Log.h"
#include "settings/OstrelleConfig.h"

#include <QDir>
#include <QFileInfo>

#include <string_view>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

void createTrackerFile(const QString &path, std::string_view content)
{
    const QString file = expandPath(path);
    if (!finishWriting(file) || fileExists(file)) {
        return;
    }
    QDir().mkpath(QFileInfo(file).path());
    if (writeInPlace(file, content)) {
        logLine(u"[Ostrelle] Created "_s + file);
    }
}

} // namespace

void OstrelleConfig::ensureTrackerFiles(const OstrelleConfig &config)
{
    createTrackerFile(config.paths.statusFile, R"({"agents":{},"completions":[]})");
    createTrackerFile(config.paths.trackerFile, R"({"version":1,"updated":"","projects":[]})");
    if (config.paths.cronFile) {
        createTrackerFile(*config.paths.cronFile, R"({"version":1,"updated":"","jobs":[]})");
    }
}

} // namespace ostrelle
