#pragma once

#include "ctl/Asking.h"
#include "ctl/Terminal.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

namespace ostrelle
{

// How an answer is to be shown.
struct Shown {
    Terminal terminal = Terminal::ofOutput();
    bool asJson = false;
    bool namesOnly = false; // of a list, for completions
};

// Complains where there is no answer; the exit status then, or nothing.
std::optional<int> complaint(const Asked &asked);

// Where the files have told, that is not all.
int statusOf(const Asked &asked, int otherwise = Well);

// The answer's data, with a member that tells whether the program gave it.
QJsonObject withRunning(const Asked &asked);

void printJson(const QJsonObject &data, const Shown &shown,
               QJsonDocument::JsonFormat format = QJsonDocument::Indented);

// Waits a second; false as soon as nobody reads the output any more.
bool pauseWhileSomebodyReads();

} // namespace ostrelle
