// Checksum of the camera's records, of recordings and of picture files.
#pragma once

#include <cstdint>
#include <span>

namespace user_space_frameworks
{

// CRC-32 of ISO 3309: polynomial 0x04C11DB7 reflected, start and final XOR 0xFFFFFFFF. `before` is the checksum of the
// bytes that stand in front of these. Thread-safe.
std::uint32_t Crc32(std::span<const std::uint8_t> bytes, std::uint32_t before = 0) noexcept;

} // namespace user_space_frameworks
