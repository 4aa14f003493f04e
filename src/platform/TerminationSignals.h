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
    // Holds the signals back until an object hears them. Call it before any other thread exists,
    // those of the application object among them: only threads made later inherit that.
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
