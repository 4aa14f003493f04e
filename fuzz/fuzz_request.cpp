// Feeds bytes to the status server as what one receive brought.

#include "Input.h"
#include "statusserver/Request.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view bytes = textOf(data, size);
    const Request request = parseRequest(bytes);
    require(request.text.empty() || request.text == bytes);
    require(!request.path.contains('?') && !request.path.contains(' '));

    const Route target = route(request);
    require(target.limit >= 0 && target.limit <= 200);
    require(target.limit == 0 || target.resource == Resource::History);
    require((target.resource == Resource::Preflight) == (request.method == "OPTIONS"));

    const std::string token = offeredToken(request.text);
    require(token.empty() || (token.front() != ' ' && token.back() != ' '));
    return 0;
}
