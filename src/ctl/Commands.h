#pragma once

#include "ctl/Shown.h"

namespace ostrelle
{

// What the subcommands do. Each prints, or complains in one line, and returns what the program ends
// with.

int showStatus(const Shown &shown);
// Until nobody reads the output any more.
int watchStatus(const Shown &shown);
int showHealth(const Shown &shown);

// What the running program tells, or else the files where they can; `text` makes a text of it.
int showList(const QString &command, const Shown &shown,
             QString (*text)(const QJsonObject &data, const Terminal &terminal),
             Otherwise otherwise = Otherwise::Nothing);

struct Pairing {
    bool asLink = false;
    bool linkOnTerminal = false; // the user does not mind who looks on
    bool onLight = false;        // the terminal, where it has no colours
};
int pairPhone(const Shown &shown, const Pairing &pairing);

int chat(const QString &text);
// Of the gateway in use where none is named.
int setToken(const std::optional<QString> &gateway);
int setGeminiKey();

// Has the program do something that needs no answer but that it is done; prints `done` then, with
// what the answer has in its member of that name in place of "%1".
int act(const ControlRequest &request, const QString &done = {}, QLatin1StringView member = {});

struct ReportFile {
    QString path;          // "-": it is only shown
    bool isAgreed = false; // the user need not be asked
};
int diagnose(const ReportFile &file);

} // namespace ostrelle
