// A GUID as recordings and the platform hold it: 16 bytes, the first three fields little-endian.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <span>
#include <string>

namespace tarn_host
{

// Value.
struct Guid
{
    std::array<std::uint8_t, 16> bytes{};

    // `from` has 16 bytes or more.
    static Guid Of(std::span<const std::uint8_t> from) noexcept;
    // As in {7F9DF308-0F2D-432E-8C8E-D36ED8F12C90}.
    std::string ToText() const;

    friend auto operator<=>(const Guid &, const Guid &) = default;
};

} // namespace tarn_host
