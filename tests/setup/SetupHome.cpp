#include "setup/SetupHome.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

using namespace ostrelle;
using namespace Qt::StringLiterals;

SetupHome::SetupHome()
{
    write(u".bash_profile"_s, "PATH=$HOME/bin");
    QDir(path()).mkdir(u"bin"_s);
    for (const QString &tool : {u"which"_s, u"mkdir"_s, u"cp"_s, u"bash"_s, u"cat"_s, u"sleep"_s}) {
        addRealTool(tool);
    }
}

SetupHome::~SetupHome()
{
    finishBackgroundWork(std::chrono::minutes(1));
}

void SetupHome::addTool(const QString &name, const QByteArray &body) const
{
    writeScript(u"bin/"_s + name, "echo \"" + name.toUtf8() + " $*\" >> ~/calls\n" + body);
}

void SetupHome::addRealTool(const QString &name) const
{
    QFile::link(QStandardPaths::findExecutable(name, {u"/usr/bin"_s}), path(u"bin/"_s + name));
}

void SetupHome::addInstaller(const QByteArray &body) const
{
    write(u"resources/install-duskrell.sh"_s, body);
}

SetupSurroundings SetupHome::surroundings() const
{
    return {.resources = path(u"resources"_s),
            .sudoSearchPath = path(u"bin"_s),
            .isConfined = false,
            .tailscaleTimeout = std::chrono::seconds(1),
            .restartPause = std::chrono::milliseconds(1)};
}

QStringList SetupHome::calls() const
{
    return QString::fromUtf8(read(u"calls"_s)).split(u'\n', Qt::SkipEmptyParts);
}

bool waitFor(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, 60'000);
}

QStringList messagesOf(SetupManager &manager)
{
    return manager.statusMessages()->messages();
}
