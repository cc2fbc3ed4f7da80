// Checksum of the records that the camera keeps in its flash memory.
#pragma once

#include <cstdint>
#include <span>

namespace mft_core
{

// CRC-32 of ISO 3309: polynomial 0x04C11DB7 reflected, start and final XOR 0xFFFFFFFF. Thread-safe.
constexpr std::uint32_t Crc32(std::span<const std::uint8_t> bytes) noexcept
{
    constexpr std::uint32_t kReflectedPolynomial = 0xEDB88320;
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes)
    {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
        {
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? kReflectedPolynomial : 0U);
        }
    }
    return ~crc;
}

} // namespace mft_core
