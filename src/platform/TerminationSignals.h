#pragma once

#include <QObject>

class QSocketNotifier;

namespace ostrelle
{

// Turns TERM, and INT and HUP unless the program was started with them ignored, into a Qt signal on
// the main thread. Construct it before any other thread exists: the signals are blocked from then
// on, and only threads made later inherit that.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void terminationRequested();

private:
    int m_signals;
    QSocketNotifier *m_notifier;
};

} // namespace ostrelle
