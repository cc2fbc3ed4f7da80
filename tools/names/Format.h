// Short texts with numbers in them.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace tarn_host
{

// As std::snprintf; cut after 255 bytes.
template <class... Values>
std::string Format(const char *format, Values... values)
{
    char text[256];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

// The integer that %llu takes on every platform.
inline unsigned long long Wide(std::uint64_t number) noexcept
{
    return number;
}

} // namespace tarn_host
