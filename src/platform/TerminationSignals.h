#pragma once

#include <QObject>

class QSocketNotifier;

namespace ostrelle
{

// Turns TERM, and INT and HUP unless the program was started with them ignored, into a Qt signal on
// the main thread.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    // Blocks the signals until an object of this class handles them. Call it before there is any
    // other thread, including those of the application object: only threads that are made later
    // inherit the block.
    static void block();

    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void terminationRequested();

private:
    int m_signals;
    QSocketNotifier *m_notifier;
};

} // namespace ostrelle
