#include "tools/ks/KsText.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

constexpr std::size_t kBytesPerLine = 16;

// Takes the whole text or nothing.
bool ReadDigits(const char *begin, const char *end, int base, std::uint32_t &value)
{
    const auto [stop, error] = std::from_chars(begin, end, value, base);
    return error == std::errc() && stop == end;
}

std::string HexByte(std::uint8_t byte)
{
    return Format("%02X", static_cast<unsigned>(byte));
}

[[noreturn]] void ThrowNoPair(const std::string &what, const std::string &text)
{
    throw UsageError(what + ": '" + text + "' is not a pair of hexadecimal digits");
}

} // namespace

std::uint32_t ParseNumber(const std::string &what, const std::string &text, std::uint32_t limit)
{
    const char *const begin = text.data();
    const char *const end = begin + text.size();
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    std::uint32_t value = 0;
    if (!ReadDigits(begin + (isHex ? 2 : 0), end, isHex ? 16 : 10, value) || value > limit)
    {
        throw UsageError(what + ": '" + text + "' is not a number of 0 to " + std::to_string(limit));
    }
    return value;
}

std::vector<std::uint8_t> ParseHex(const std::string &what, const std::string &text)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at < text.size();)
    {
        if (text[at] == ' ')
        {
            ++at;
            continue;
        }
        std::uint32_t value = 0;
        const std::string pair = text.substr(at, 2);
        if (pair.size() != 2 || !ReadDigits(pair.data(), pair.data() + 2, 16, value))
        {
            ThrowNoPair(what, pair);
        }
        bytes.push_back(static_cast<std::uint8_t>(value));
        at += 2;
    }
    return bytes;
}

std::string ToHex(std::span<const std::uint8_t> bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes)
    {
        text += HexByte(byte);
    }
    return text;
}

std::string HexDump(std::span<const std::uint8_t> bytes)
{
    std::string dump;
    for (std::size_t at = 0; at < bytes.size(); at += kBytesPerLine)
    {
        const auto line = bytes.subspan(at, std::min(kBytesPerLine, bytes.size() - at));
        std::string digits;
        std::string characters;
        for (const std::uint8_t byte : line)
        {
            digits.append(" ").append(HexByte(byte));
            characters += byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : '.';
        }
        digits.resize(kBytesPerLine * 3, ' ');
        dump.append(Format("%04zX ", at)).append(digits).append("  ").append(characters).append("\n");
    }
    return dump;
}

} // namespace tarn_host
