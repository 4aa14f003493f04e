#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

namespace ostrelle
{

// Buttons of the sheet, in the words in which an advice names them.
inline const QString installEverythingBelow = QStringLiteral("“Install Everything” below");
inline const QString installVoiceBelow = QStringLiteral("“Install Voice + Finish” below");
inline const QString reCheckBelow = QStringLiteral("“Re-check” below");

// One thing that the program needs: whether it is there, what stands in for it, and what puts it
// there.
struct SetupCheck {
    Q_GADGET
    Q_PROPERTY(QString label MEMBER label)
    Q_PROPERTY(bool ok MEMBER ok)
    Q_PROPERTY(QString note MEMBER note)
    Q_PROPERTY(QString advice MEMBER advice)
    Q_PROPERTY(QStringList commands MEMBER commands)

public:
    QString label;
    bool ok = false;
    QString note = {};         // empty: there is nothing to add
    QString advice = {};       // what to do about it where it is missing; may be empty
    QStringList commands = {}; // to type or to open then; empty ones are none

    friend bool operator==(const SetupCheck &, const SetupCheck &) = default;
};

// All of them, as the setup sheet and ostrellectl show them.
struct SetupChecks {
    Q_GADGET
    Q_PROPERTY(ostrelle::SetupCheck compiler MEMBER compiler)
    Q_PROPERTY(ostrelle::SetupCheck brew MEMBER brew)
    Q_PROPERTY(ostrelle::SetupCheck node MEMBER node)
    Q_PROPERTY(ostrelle::SetupCheck duskrell MEMBER duskrell)
    Q_PROPERTY(ostrelle::SetupCheck tailscale MEMBER tailscale)
    Q_PROPERTY(ostrelle::SetupCheck loggedIn MEMBER loggedIn)
    Q_PROPERTY(ostrelle::SetupCheck serve MEMBER serve)
    Q_PROPERTY(ostrelle::SetupCheck agent MEMBER agent)
    Q_PROPERTY(ostrelle::SetupCheck token MEMBER token)
    Q_PROPERTY(ostrelle::SetupCheck config MEMBER config)
    Q_PROPERTY(ostrelle::SetupCheck models MEMBER models)
    Q_PROPERTY(ostrelle::SetupCheck venv MEMBER venv)

public:
    SetupCheck compiler, brew, node, duskrell, tailscale;
    SetupCheck loggedIn, serve;
    SetupCheck agent, token;
    SetupCheck config, models, venv;

    // In the order of the setup's steps.
    QList<SetupCheck> all() const
    {
        return {compiler, brew,  node,  duskrell, tailscale, loggedIn,
                serve,    agent, token, config,   models,    venv};
    }

    friend bool operator==(const SetupChecks &, const SetupChecks &) = default;
};

} // namespace ostrelle
