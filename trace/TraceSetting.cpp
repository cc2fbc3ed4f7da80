#include "trace/TraceSetting.h"

#include <charconv>
#include <system_error>

#include "trace/TraceLevels.h"
#include "trace/TraceLine.h"

namespace mft_utils
{

namespace
{
std::uint32_t ParseLevel(std::string_view word) noexcept
{
    for (const TraceLevel level : {TraceLevel::Error, TraceLevel::Information, TraceLevel::Verbose})
    {
        const auto number = static_cast<std::uint32_t>(level);
        if (word == TraceLevelName(level) || (word.size() == 1 && static_cast<std::uint32_t>(word[0] - '0') == number))
        {
            return number;
        }
    }
    return 0;
}

// Cuts "limit=<MiB>," off, if it is there. False when it is not understood.
bool TakeLimit(std::string_view &option, std::uint64_t &limitBytes) noexcept
{
    constexpr std::string_view kLimit = "limit=";
    constexpr std::uint32_t kMaxMiB = 4096;
    if (!option.starts_with(kLimit))
    {
        return true;
    }
    std::uint32_t mebibytes = 0;
    const char *const end = option.data() + option.size();
    const auto [rest, error] = std::from_chars(option.data() + kLimit.size(), end, mebibytes);
    if (error != std::errc{} || mebibytes == 0 || mebibytes > kMaxMiB || rest == end || *rest != ',')
    {
        return false;
    }
    limitBytes = std::uint64_t{mebibytes} * 1024 * 1024;
    option.remove_prefix(static_cast<std::size_t>(rest + 1 - option.data()));
    return true;
}
} // namespace

TraceSetting TraceSetting::Parse(std::string_view setting) noexcept
{
    constexpr std::string_view kFile = "file=";
    const std::size_t comma = setting.find(',');
    TraceSetting parsed;
    parsed.level = ParseLevel(setting.substr(0, comma));
    if (comma == std::string_view::npos)
    {
        return parsed;
    }
    std::string_view option = setting.substr(comma + 1);
    if (!TakeLimit(option, parsed.limitBytes))
    {
        return {};
    }
    if (option == "file=stderr")
    {
        parsed.destination = Destination::StandardError;
        return parsed;
    }
    if (!option.starts_with(kFile) || option.size() == kFile.size())
    {
        return {};
    }
    parsed.destination = Destination::File;
    parsed.path = option.substr(kFile.size());
    return parsed;
}

} // namespace mft_utils
