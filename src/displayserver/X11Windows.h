#pragma once

class QWindow;

namespace ostrelle
{

// Whether windows may be seen through: always on Wayland, on X11 while a compositor runs. Main
// thread only.
bool isComposited();

// Keeps a window that is about to be shown out of taskbars and pagers. It has to be asked for
// before each showing: the window manager forgets it with a hidden window. Only X11 lets a program
// ask. Main thread only.
void keepOutOfTaskbars(QWindow &window);

} // namespace ostrelle
