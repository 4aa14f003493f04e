#include "setup/AskpassFile.h"

#include "platform/Files.h"
#include "platform/Paths.h"

#include <QFile>

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString escapedPassword(const QString &password)
{
    return QString(password).replace(u"\\"_s, u"\\\\"_s).replace(u"'"_s, u"'\\''"_s);
}

std::optional<QString> AskpassFile::write(const QString &password)
{
    const std::scoped_lock lock(m_mutex);
    const auto directory = m_isRemoved ? std::nullopt : privateTemporaryDirectory();
    if (!directory) {
        return std::nullopt;
    }
    m_path = *directory + u"/ostrelle-askpass.sh"_s;
    const QString script = u"#!/bin/bash\necho '"_s + escapedPassword(password) + u'\'';
    constexpr mode_t ownerOnly = 0700;
    return createAnew(m_path, script.toUtf8(), ownerOnly) ? std::optional(m_path) : std::nullopt;
}

void AskpassFile::remove()
{
    const std::scoped_lock lock(m_mutex);
    m_isRemoved = true;
    if (!m_path.isEmpty()) {
        QFile::remove(m_path);
    }
}

} // namespace ostrelle
