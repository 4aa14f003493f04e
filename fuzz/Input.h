#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

inline std::string_view textOf(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), size};
}

inline QByteArray bytesOf(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)};
}

// A property that holds for every input; the fuzzer reports the input for which it does not.
inline void require(bool property)
{
    if (!property) {
        std::abort();
    }
}
