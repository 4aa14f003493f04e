#pragma once

#include <QObject>

#include <chrono>

namespace ostrelle
{

// Turns TERM, and INT and HUP unless the program was started with them ignored, into one Qt signal
// on the main thread.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    // Blocks the signals and waits for them on a thread of its own, where `giveUp` is called when
    // the program is still there `patience` after the first of them: the main thread may hang. Call
    // it before there is any other thread, including those of the application object: only threads
    // that are made later inherit the block. False when the system has no thread for it.
    static bool watch(std::chrono::milliseconds patience, void (*giveUp)());

    explicit TerminationSignals(QObject *parent = nullptr);

Q_SIGNALS:
    void terminationRequested();
};

} // namespace ostrelle
