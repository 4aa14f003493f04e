#pragma once

#include "gateway/NetworkHelpers.h"
#include "support/ScratchHome.h"

#include <QTest>

// Scripts that stand in for the Tailscale tool and the gateway's tool. What they print comes from
// files below the home, and each call leaves a line in the file "calls".

// The tool prints what stands in the file named after its first argument.
inline ostrelle::TailscalePlaces scriptedTailscale(const ScratchHome &home)
{
    using namespace Qt::StringLiterals;
    return {.tools = {home.writeScript(u"tailscale"_s, "echo \"tailscale $*\" >> \"$HOME/calls\"\n"
                                                       "while [ -e \"$HOME/hang\" ]; do sleep "
                                                       "0.02; done\n"
                                                       "cat \"$HOME/tailscale-$1\" 2>/dev/null")},
            .application = {},
            .applicationTool = {}};
}

// The tool writes what stands in the files "<first argument>.out" and ".err", and fails at the
// arguments that the file "fail" names. It comes first on the search path.
inline QString scriptedDuskrell(const ScratchHome &home)
{
    using namespace Qt::StringLiterals;
    const QString tool =
        home.writeScript(u"bin/duskrell"_s, "echo \"duskrell $*\" >> \"$HOME/calls\"\n"
                                            "case $1$2 in configset|gatewayrestart) ;; *)\n"
                                            "cat \"$HOME/duskrell.out\" 2>/dev/null;; esac\n"
                                            "cat \"$HOME/duskrell.err\" >&2 2>/dev/null\n"
                                            "! grep -qsxF -e \"$*\" \"$HOME/fail\"");
    qputenv("PATH", home.path(u"bin"_s).toUtf8() + ':' + qgetenv("PATH"));
    return tool;
}

inline QByteArrayList calls(const ScratchHome &home)
{
    return home.read(QStringLiteral("calls")).trimmed().split('\n');
}
