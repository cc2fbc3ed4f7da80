#include "base/Crc32.h"

#include <array>

namespace user_space_frameworks
{

namespace
{
constexpr std::array<std::uint32_t, 256> MakeTable()
{
    constexpr std::uint32_t kReflectedPolynomial = 0xEDB88320;
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i)
    {
        std::uint32_t crc = i;
        for (int bit = 0; bit < 8; ++bit)
        {
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? kReflectedPolynomial : 0U);
        }
        table[i] = crc;
    }
    return table;
}
} // namespace

std::uint32_t Crc32(std::span<const std::uint8_t> bytes) noexcept
{
    static constexpr std::array<std::uint32_t, 256> table = MakeTable();
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes)
    {
        crc = table[(crc ^ byte) & 0xFFU] ^ (crc >> 8);
    }
    return ~crc;
}

} // namespace user_space_frameworks
