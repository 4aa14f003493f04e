#pragma once

#include <QByteArray>
#include <QObject>

#include <functional>
#include <memory>

namespace ostrelle
{

class OstrelleApp;

// What a display adds to the program. Made before anything else is begun. Main thread only.
class Face
{
public:
    virtual ~Face() = default;
    Face(const Face &) = delete;
    Face &operator=(const Face &) = delete;

    // Shows the program from now on. The face goes before the application.
    virtual void show(OstrelleApp &app) = 0;

    // Only after show().
    virtual void openPanel() = 0;

    // Calls `pressed` on every Super+Shift+M, whatever window has the focus, for as long as the
    // returned object lives.
    virtual std::unique_ptr<QObject> monitorShortcut(std::function<void()> pressed) = 0;

protected:
    Face() = default;
};

using MakeFace = std::unique_ptr<Face> (*)();

// What has to be done before there is an application object and other threads.
void prepareProgram();

// Runs the program until it is to end, and then ends the process; returns the exit status where
// there was nothing to run. `link` is what the desktop opens the program with, or empty. Without
// `makeFace` the program does everything but show itself.
int runProgram(const QByteArray &link, MakeFace makeFace = nullptr);

} // namespace ostrelle
