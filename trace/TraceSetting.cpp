#include "trace/TraceSetting.h"

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
} // namespace

TraceSetting TraceSetting::Parse(std::string_view setting) noexcept
{
    constexpr std::string_view kFile = "file=";
    const std::size_t comma = setting.find(',');
    TraceSetting parsed{ParseLevel(setting.substr(0, comma)), Destination::Debugger, {}};
    if (comma == std::string_view::npos)
    {
        return parsed;
    }
    const std::string_view option = setting.substr(comma + 1);
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
