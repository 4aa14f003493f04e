#pragma once

#include <string>
#include <string_view>

namespace ostrelle
{

// The header lines of a JSON answer whose body has `length` bytes, the empty line included.
std::string jsonHeader(std::string_view status, std::size_t length);

// Whole answers. `status` is for instance "200 OK"; `body` is UTF-8.
std::string jsonResponse(std::string_view status, std::string_view body);
std::string corsResponse(std::string_view status, std::string_view body);

// A whole answer in a buffer that may begin with unused room: a document is read before its length,
// and thereby its header, is known.
struct Response {
    std::string storage;
    std::size_t begin = 0;

    std::string_view bytes() const { return std::string_view(storage).substr(begin); }
};

} // namespace ostrelle
