#pragma once

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
