#include "tools/names/Guid.h"

#include <algorithm>
#include <cstddef>

namespace tarn_host
{

Guid Guid::Of(std::span<const std::uint8_t> from) noexcept
{
    Guid guid;
    std::copy_n(from.begin(), guid.bytes.size(), guid.bytes.begin());
    return guid;
}

std::string Guid::ToText() const
{
    constexpr std::array<std::size_t, 16> order{3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    constexpr const char *digits = "0123456789ABCDEF";
    std::string text = "{";
    for (std::size_t i = 0; i < order.size(); ++i)
    {
        text += i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "";
        text += digits[bytes[order[i]] >> 4];
        text += digits[bytes[order[i]] & 0xF];
    }
    return text + "}";
}

} // namespace tarn_host
