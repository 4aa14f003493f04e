#include "control/FileFacts.h"

#include "core/ExpandPath.h"
#include "platform/Paths.h"
#include "tracker/JobList.h"
#include "tracker/TrackerDocument.h"

#include <QDateTime>
#include <QFileInfo>
#include <QJsonObject>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QJsonObject describe(const QString &name, const QString &path)
{
    const QFileInfo file(path);
    QJsonObject document{{"name"_L1, name}, {"file"_L1, homely(path)}};
    if (file.isFile()) {
        const QDateTime now = QDateTime::currentDateTime();
        const QDateTime changed = file.lastModified();
        document.insert("bytes"_L1, file.size());
        document.insert("ageSeconds"_L1, changed.secsTo(now));
        document.insert("age"_L1,
                        formatRelativeTime(static_cast<double>(changed.toMSecsSinceEpoch()), now));
    }
    return document;
}

} // namespace

QString homely(QString text)
{
    for (const QString &home : {QFileInfo(homeDirectory()).canonicalFilePath(), homeDirectory()}) {
        if (home.size() > 1) {
            text.replace(home, "~"_L1);
        }
    }
    return text;
}

FileFacts lookAtFiles(const Settings &settings, AskTokens askTokens)
{
    const OstrelleConfig config = settings.config->current();
    FileFacts facts;
    facts.documents = {describe(u"agents"_s, expandPath(config.paths.statusFile)),
                       describe(u"projects"_s, expandPath(config.paths.trackerFile)),
                       describe(u"cron"_s, cronFilePathOf(config))};
    if (askTokens == AskTokens::Yes) {
        facts.hasToken = !settings.tokens->tokenFor(config.gateway.url, config).isEmpty();
    }
    facts.secrets = homely(settings.tokens->whereKept());
    return facts;
}

} // namespace ostrelle
