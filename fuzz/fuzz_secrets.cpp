// Reads any secrets.json and writes a secret into it: the secret is there, with all others that
// could be read; what cannot be understood is set aside as it was.

#include "Input.h"
#include "ScratchFile.h"
#include "settings/SecretFile.h"

#include <QHash>

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray content = bytesOf(data, size);
    const ScratchFile scratch(content);
    SecretFile file(scratch.path());
    QHash<QString, QByteArray> known;
    for (const QString &account : file.accounts()) {
        const auto secret = file.read(account);
        require(secret && secret->has_value());
        known.insert(account, **secret);
    }
    const QString account = QStringLiteral("gateway-token:http://127.0.0.1:1");
    require(file.write(account, "s3cret").has_value());
    known.insert(account, "s3cret");
    SecretFile again(scratch.path());
    require(again.accounts().size() == known.size());
    for (auto entry = known.cbegin(); entry != known.cend(); ++entry) {
        require(again.read(entry.key()).value_or(std::nullopt) == entry.value());
    }
    if (scratch.files() == 2) {
        QFile broken(scratch.path() + QStringLiteral(".broken"));
        require(broken.open(QIODevice::ReadOnly));
        require(broken.readAll() == content);
    }
    return 0;
}
