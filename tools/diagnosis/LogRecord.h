// One record of a trace or log of the module, whatever it was read from.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarn_host
{

// Value.
struct LogRecord
{
    enum class Kind : std::uint8_t
    {
        Message,
        Event,
        Start, // of an activity
        Stop
    };

    static constexpr std::uint32_t kErrorLevel = 2;
    static constexpr std::uint32_t kInfoLevel = 4;
    static constexpr std::uint32_t kVerboseLevel = 8;

    std::int64_t timeUs = 0; // of the clock that the file tells, since 1970; since midnight where it tells no day
    std::uint32_t process = 0;
    std::uint32_t thread = 0;
    std::uint32_t level = kInfoLevel;
    Kind kind = Kind::Message;
    std::string source; // function of a message, name of an event
    std::string text;   // of a message
    std::vector<std::pair<std::string, std::string>> fields;

    bool IsError() const noexcept
    {
        return level == kErrorLevel;
    }
    // Empty when there is none.
    std::string_view Field(std::string_view name) const noexcept
    {
        for (const auto &[key, value] : fields)
        {
            if (key == name)
            {
                return value;
            }
        }
        return {};
    }
};

} // namespace tarn_host
