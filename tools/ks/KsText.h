// Numbers and bytes as people type and read them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tarn_host
{

// Decimal, or hexadecimal after 0x; nothing before or behind. Throws UsageError, naming `what`, for anything else and
// for what is above `limit`.
std::uint32_t ParseNumber(const std::string &what, const std::string &text, std::uint32_t limit = 0xFFFFFFFF);

// Pairs of hexadecimal digits; blanks may stand between the pairs. Throws UsageError.
std::vector<std::uint8_t> ParseHex(const std::string &what, const std::string &text);

// "01FF20"
std::string ToHex(std::span<const std::uint8_t> bytes);
// Lines of 16 bytes: offset, bytes, printable characters.
std::string HexDump(std::span<const std::uint8_t> bytes);

} // namespace tarn_host
