#pragma once

#include "platform/Files.h"
#include "settings/OstrelleConfig.h"
#include "statusserver/StatusServer.h"
#include "support/PrintedLines.h"
#include "support/ScratchHome.h"

#include <memory>
#include <optional>

// The document that /status sends, below the home directory.
inline const QString agentTrackerFile = QStringLiteral(".ostrelle/ostrelle-agent-tracker.json");

// One TCP connection to the server under test, as raw as can be. Reads wait up to 10 seconds.
class RawClient
{
public:
    explicit RawClient(int port, int receiveBufferBytes = 0);

    bool send(const QByteArray &bytes);
    // No further request bytes will come.
    void finishSending();
    QByteArray read(qsizetype atMost);
    // Until the server closes; nothing when it did not within the time or reset the connection.
    std::optional<QByteArray> readAll();
    bool isConnected() const { return m_connected; }

private:
    ostrelle::Descriptor m_socket;
    bool m_connected = false;
};

// A status server in a home of its own, on a port that the kernel chooses.
class ServerFixture
{
public:
    explicit ServerFixture(const ostrelle::ServerLimits &limits = {});

    // Builds the server anew with a changed configuration.
    void restart(const ostrelle::OstrelleConfig &config, const ostrelle::ServerLimits &limits = {});

    // What a client gets that sends these bytes at once; null when the connection broke.
    QByteArray ask(const QByteArray &request) const;
    QByteArray get(const QByteArray &target) const;

    ostrelle::OstrelleConfig config() const;
    void writeSession(const QByteArray &log, const QString &name = QStringLiteral("a.jsonl")) const;

    ScratchHome home;
    std::unique_ptr<ostrelle::StatusServer> server;
};

// The answer that a JSON body makes.
QByteArray jsonAnswer(const QByteArray &status, const QByteArray &body);
QByteArray bodyOf(const QByteArray &answer);
// What /health answers.
inline const QByteArray healthy = jsonAnswer("200 OK", R"({"ok":true})");

// A session log's line with one message.
QByteArray messageLine(const QByteArray &text, const QByteArray &role = "user");
