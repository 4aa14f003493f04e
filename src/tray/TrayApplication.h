#pragma once

#include <QApplication>

#include <vector>

namespace ostrelle
{

// Where the program may show itself, in the form of arguments; they outlive the application that
// takes them.
class PlatformArguments
{
protected:
    PlatformArguments(int argc, char **argv);

    int m_count = 0;
    std::vector<char *> m_values;
};

// The program as an application of the desktop. Main thread only.
class TrayApplication : private PlatformArguments, public QApplication
{
public:
    TrayApplication(int argc, char **argv);
};

// Whether the application, of whatever kind, has reached a display.
bool isOnDisplay();

} // namespace ostrelle
