#include "gateway/QrCode.h"

#include <qrencode.h>

#include <algorithm>
#include <memory>

namespace ostrelle
{

std::optional<QrCode> QrCode::encode(const QByteArray &bytes, Correction correction)
{
    constexpr int smallestThatFits = 0;
    // The library's flag for a dark module.
    constexpr unsigned char dark = 1;

    const std::unique_ptr<QRcode, decltype(&QRcode_free)> symbol(
        QRcode_encodeData(static_cast<int>(bytes.size()),
                          reinterpret_cast<const unsigned char *>(bytes.constData()),
                          smallestThatFits,
                          correction == Correction::Low ? QR_ECLEVEL_L : QR_ECLEVEL_M),
        &QRcode_free);
    if (!symbol) {
        return std::nullopt;
    }
    QrCode code;
    code.m_size = symbol->width;
    code.m_modules.resize(qsizetype{symbol->width} * symbol->width);
    std::transform(symbol->data, symbol->data + code.m_modules.size(), code.m_modules.begin(),
                   [](unsigned char module) { return static_cast<char>(module & dark); });
    return code;
}

} // namespace ostrelle
