#include "base/Crc32.h"

#include <array>
#include <cstring>

namespace user_space_frameworks
{

namespace
{
constexpr std::size_t kSlices = 8;
using Tables = std::array<std::array<std::uint32_t, 256>, kSlices>;

// Table n: the checksum of a byte with n zero bytes behind it.
constexpr Tables MakeTables()
{
    constexpr std::uint32_t kReflectedPolynomial = 0xEDB88320;
    Tables tables{};
    for (std::uint32_t i = 0; i < 256; ++i)
    {
        std::uint32_t crc = i;
        for (int bit = 0; bit < 8; ++bit)
        {
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? kReflectedPolynomial : 0U);
        }
        tables[0][i] = crc;
    }
    for (std::size_t slice = 1; slice < kSlices; ++slice)
    {
        for (std::size_t i = 0; i < 256; ++i)
        {
            const std::uint32_t shorter = tables[slice - 1][i];
            tables[slice][i] = tables[0][shorter & 0xFFU] ^ (shorter >> 8);
        }
    }
    return tables;
}
} // namespace

std::uint32_t Crc32(std::span<const std::uint8_t> bytes, std::uint32_t before) noexcept
{
    static constexpr Tables tables = MakeTables();
    std::uint32_t crc = ~before;
    for (; bytes.size() >= kSlices; bytes = bytes.subspan(kSlices))
    {
        std::array<std::uint32_t, 2> words{}; // little-endian, as every machine that this is built for
        std::memcpy(words.data(), bytes.data(), kSlices);
        words[0] ^= crc;
        crc = 0;
        for (std::size_t i = 0; i < kSlices; ++i)
        {
            crc ^= tables[kSlices - 1 - i][words[i / 4] >> (i % 4 * 8) & 0xFFU];
        }
    }
    for (const std::uint8_t byte : bytes)
    {
        crc = tables[0][(crc ^ byte) & 0xFFU] ^ (crc >> 8);
    }
    return ~crc;
}

} // namespace user_space_frameworks
