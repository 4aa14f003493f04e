#pragma once

#include <QJsonObject>
#include <QString>

namespace ostrelle::simulator
{

// The instant that is played and what makes one gateway differ from another. Whatever is derived
// from it alone is the same in the tool and in the service, without a word between them.
struct World {
    quint64 seed = 1;
    qint64 nowMs = 0; // epoch milliseconds

    // A number that looks random and is always the same for the same name.
    quint64 dice(const QString &name) const;
    // The same as an identity in the form of a UUID.
    QString identity(const QString &name) const;
};

// What the simulator is told to be: simulator.json in the .duskrell directory, read afresh for each
// run of the tool and each request. README.md names its members.
struct Settings {
    World world;
    QString toolMode; // empty: behave; the same below
    QString serviceMode;
    bool record = false;

    static Settings load();
};

// Appends a call or a request to simulator-record.jsonl in the .duskrell directory.
void record(const QJsonObject &entry);

// One of the lists of the script that is played: who appears, which jobs there are. What a member
// named "play" says is for the simulator alone.
QJsonArray scripted(QStringView list);

} // namespace ostrelle::simulator
