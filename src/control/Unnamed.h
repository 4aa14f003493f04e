#pragma once

#include <QStringList>

namespace ostrelle
{

// A text for strangers: it names neither the machines at these addresses, URLs or hosts, nor any
// other by an IP address or a name in a tailnet. A number stands for each of them, the same one
// throughout, so that it is seen which ones are the same. This machine's loopback stays.
QString unnamed(QString text, const QStringList &addresses);

} // namespace ostrelle
