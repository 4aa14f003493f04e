#pragma once

#include "settings/OstrelleConfig.h"
#include "statusserver/ServerLimits.h"

#include <QObject>
#include <QTimer>

#include <memory>

namespace ostrelle
{

class ServerEngine;

// Publishes the tracker documents and the session history of this machine over HTTP, read-only, on
// every interface. Main thread only; everything slow happens on threads of its own.
class StatusServer : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool running READ running NOTIFY runningChanged FINAL)
    Q_PROPERTY(int port READ port NOTIFY runningChanged FINAL)
    Q_PROPERTY(bool portTaken READ portTaken NOTIFY portTakenChanged FINAL)

public:
    // Also removes, in the background, the separate status agent of an older version.
    StatusServer(const OstrelleConfig &config, std::shared_ptr<const Tokens> tokens,
                 const ServerLimits &limits = {}, QObject *parent = nullptr);

    // Ends at once even while clients are served; a thread that hangs in the file system or the
    // secret store is left behind after 300 ms.
    ~StatusServer() override;

    // Listens on the configured port, 0 for one that the kernel chooses. Returns at once; success
    // is told by runningChanged() and one log line, failure by a log line. Does nothing unless the
    // server is idle. A port that another program listens on is tried again every 30 s until
    // stop(), and so is a start for which the system had no thread.
    void start();

    // Returns at once; from then on connections are refused. Those being served are finished.
    void stop();

    bool running() const;
    bool startRequested() const;

    // The port that is listened on; 0 while not running.
    int port() const;

    // Another program listens on the port; the server waits for its end.
    bool portTaken() const;

Q_SIGNALS:
    void runningChanged();
    void portTakenChanged();

private:
    static void disableLegacyStatusServer();
    void tellState();

    const std::shared_ptr<ServerEngine> m_engine;
    QTimer m_nextTry; // runs while there is no thread
    bool m_toldRunning = false;
    bool m_toldPortTaken = false;
};

} // namespace ostrelle
