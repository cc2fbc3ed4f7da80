#include "tools/command/VideoSize.h"

#include <charconv>

#include "tools/command/ExitCode.h"

namespace tarn_host
{

namespace
{

constexpr std::uint32_t kLargestNumber = 16384;

// Reads a number from 1 to kLargestNumber from the front of `text` and moves past it.
bool TakeNumber(std::string_view &text, std::uint32_t &number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || number == 0 || number > kLargestNumber)
    {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool TakeSeparator(std::string_view &text, char separator)
{
    if (!text.starts_with(separator))
    {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

} // namespace

VideoSize VideoSize::Parse(std::string_view text)
{
    VideoSize size;
    std::string_view rest = text;
    if (!TakeNumber(rest, size.width) || !TakeSeparator(rest, 'x') || !TakeNumber(rest, size.height) ||
        !TakeSeparator(rest, '@') || !TakeNumber(rest, size.framesPerSecond) || !rest.empty())
    {
        throw UsageError("'" + std::string(text) + "' is not a size and rate; write it like 640x480@30");
    }
    return size;
}

std::string VideoSize::ToText() const
{
    return std::to_string(width) + "x" + std::to_string(height) + "@" + std::to_string(framesPerSecond);
}

} // namespace tarn_host
