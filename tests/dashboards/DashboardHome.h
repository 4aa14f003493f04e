#pragma once

#include "gateway/StandInGateway.h"
#include "settings/OstrelleConfig.h"
#include "support/ScratchHome.h"

// A home whose configuration names the three tracker files "status", "tracker" and "cron" in it.
class DashboardHome : public ScratchHome
{
public:
    DashboardHome() { useGateway(QStringLiteral("http://127.0.0.1:18789")); }

    void useGateway(const QString &url) const
    {
        auto config = ostrelle::OstrelleConfig::defaults();
        config.gateway.url = url;
        config.paths = {.statusFile = QStringLiteral("~/status"),
                        .trackerFile = path(QStringLiteral("tracker")),
                        .cronFile = QStringLiteral("~/cron")};
        config.save();
        write(QStringLiteral(".duskrell/duskrell.json"),
              R"({"gateway":{"auth":{"token":"secret"}}})");
    }
};

// The status server of another machine: an address of this one that is not known as such.
class OtherMachine : public StandInGateway
{
public:
    OtherMachine()
        : StandInGateway(QHostAddress(QStringLiteral("127.94.18.7")), 18794)
    {
    }

    static QString gatewayUrl() { return QStringLiteral("http://127.94.18.7:18789"); }
};
