#include "statusserver/Response.h"

#include <initializer_list>

namespace ostrelle
{

namespace
{

constexpr std::string_view jsonFields =
    "\r\nContent-Type: application/json\r\nAccess-Control-Allow-Origin: *\r\nContent-Length: ";
constexpr std::string_view corsFields =
    "\r\nAccess-Control-Allow-Origin: *\r\nAccess-Control-Allow-Methods: GET, OPTIONS"
    "\r\nAccess-Control-Allow-Headers: Content-Type\r\nContent-Length: ";

std::string header(std::string_view status, std::string_view fields, std::size_t length)
{
    std::string text;
    text.reserve(256);
    for (const std::string_view piece : {std::string_view("HTTP/1.1 "), status, fields}) {
        text += piece;
    }
    return text.append(std::to_string(length)).append("\r\nConnection: close\r\n\r\n");
}

} // namespace

std::string jsonHeader(std::string_view status, std::size_t length)
{
    return header(status, jsonFields, length);
}

std::string jsonResponse(std::string_view status, std::string_view body)
{
    return jsonHeader(status, body.size()).append(body);
}

std::string corsResponse(std::string_view status, std::string_view body)
{
    return header(status, corsFields, body.size()).append(body);
}

} // namespace ostrelle
