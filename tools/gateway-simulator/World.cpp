#include "World.h"

#include "GatewayFiles.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>
#include <QtEndian>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;

namespace
{

QUuid nameBased(quint64 seed, const QString &name)
{
    const QUuid space(0x6f737472, 0x656c, 0x6c65, 0x80, 0, 0, 0, 0, 0, 0, 1);
    return QUuid::createUuidV5(space, QString::number(seed) + u'/' + name);
}

} // namespace

quint64 World::dice(const QString &name) const
{
    return qFromBigEndian<quint64>(nameBased(seed, name).toRfc4122().constData());
}

QString World::identity(const QString &name) const
{
    return nameBased(seed, name).toString(QUuid::WithoutBraces);
}

Settings Settings::load()
{
    const QJsonObject file = readObject(gatewayPath(u"simulator.json"_s)).value_or(QJsonObject());
    return {.world = {.seed = static_cast<quint64>(file["seed"_L1].toInteger(1)),
                      .nowMs = file["now"_L1].toInteger(QDateTime::currentMSecsSinceEpoch())},
            .toolMode = file["tool"_L1].toString(),
            .serviceMode = file["service"_L1].toString(),
            .record = file["record"_L1].toBool()};
}

void record(const QJsonObject &entry)
{
    appendLine(gatewayPath(u"simulator-record.jsonl"_s),
               QJsonDocument(entry).toJson(QJsonDocument::Compact));
}

QJsonArray scripted(QStringView list)
{
    const QJsonObject settings =
        readObject(gatewayPath(u"simulator.json"_s)).value_or(QJsonObject());
    QFile file(u":/%1.json"_s.arg(settings["script"_L1].toString(u"script"_s)));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QJsonDocument::fromJson(file.readAll())[list].toArray();
}

} // namespace ostrelle::simulator
