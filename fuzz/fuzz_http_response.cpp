// Feeds bytes to the reader of HTTP responses, once as a whole and once cut in two: both must come
// to the same. The first byte says where to cut.

#include "Input.h"
#include "core/HttpResponseReader.h"

using namespace ostrelle;

namespace
{

constexpr qsizetype maxBodyBytes = 64;

HttpResponseReader read(QByteArrayView response, qsizetype cut)
{
    HttpResponseReader reader(maxBodyBytes);
    auto state = reader.feed(response.first(cut));
    if (state == HttpResponseReader::State::Reading) {
        state = reader.feed(response.sliced(cut));
    }
    if (state == HttpResponseReader::State::Reading) {
        reader.close();
    }
    return reader;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const QByteArrayView response(data + 1, static_cast<qsizetype>(size) - 1);
    auto whole = read(response, response.size());
    auto cut = read(response, data[0] % (response.size() + 1));
    require(whole.feed({}) == cut.feed({}));
    if (whole.feed({}) == HttpResponseReader::State::Complete) {
        require(whole.answer().status == cut.answer().status);
        require(whole.answer().body == cut.answer().body);
        require(whole.answer().body.size() <= maxBodyBytes);
    }
    return 0;
}
