#pragma once

#include "gateway/TailscaleStatus.h"

#include <QStringList>

namespace ostrelle
{

// Where Tailscale may be installed; a test names places of its own.
struct TailscalePlaces {
    QStringList tools = {QStringLiteral("/usr/local/bin/tailscale"),
                         QStringLiteral("/opt/homebrew/bin/tailscale"),
                         QStringLiteral("/usr/bin/tailscale")};
    QString application = QStringLiteral("/Applications/Tailscale.app");
    QString applicationTool =
        QStringLiteral("/Applications/Tailscale.app/Contents/MacOS/Tailscale");
};

// What the gateway features need to know of the machine's network. Nothing is kept between calls:
// each looks at the file system and runs the tools again. A tool that is missing, fails or prints
// nonsense counts as one that printed nothing. Every function but getLocalIP() may run child
// processes and waits for them, for at most a minute each: background threads only.
class NetworkHelpers
{
public:
    NetworkHelpers() = delete;

    // Runs a command through bash with a fixed environment and returns its standard output as it
    // is, or an empty text when it could not be started or did not print UTF-8. The exit status
    // plays no part.
    static QString runProcess(const QString &executable, const QStringList &args);

    // The path of the Tailscale tool; empty where there is none. Looks at the disk.
    static QString tailscaleCLI(const TailscalePlaces &places = {});
    static bool isTailscaleInstalled(const TailscalePlaces &places = {});

    static std::optional<QString> getTailscaleIP(const TailscalePlaces &places = {});

    // The first line of the tool's serve status that has an https address in it: the whole line,
    // whatever else it says.
    static std::optional<QString> getTailscaleServeURL(const TailscalePlaces &places = {});
    static std::optional<QString> getSelfMagicDNS(const TailscalePlaces &places = {});
    static QList<OnlinePeer> getOnlinePeers(const TailscalePlaces &places = {});

    // This machine's first IPv4 address on the local network. Does not block.
    static std::optional<QString> getLocalIP();
};

} // namespace ostrelle
