#include "tools/diagnosis/ClockText.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace tarn_host
{

namespace
{
template <class... Values>
std::string Printed(const char *format, Values... values)
{
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

// Decimals of a second, of which six count.
std::int64_t TakeFraction(TextScanner &scanner)
{
    std::int64_t fraction = 0;
    int digits = 0;
    for (; !scanner.AtEnd() && scanner.Rest().front() >= '0' && scanner.Rest().front() <= '9'; ++digits)
    {
        fraction = digits < 6 ? fraction * 10 + (scanner.Rest().front() - '0') : fraction;
        scanner.Take(scanner.Rest().substr(0, 1));
    }
    for (; digits < 6; ++digits)
    {
        fraction *= 10;
    }
    return fraction;
}
} // namespace

bool TakeTimeOfDay(TextScanner &scanner, std::int64_t &timeUs)
{
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    if (!scanner.TakeNumber(hour) || hour > 23 || !scanner.Take(":") || !scanner.TakeNumber(minute) || minute > 59 ||
        !scanner.Take(":") || !scanner.TakeNumber(second) || second > 60)
    {
        return false;
    }
    timeUs = (hour * 3600 + minute * 60 + second) * kUsPerSecond;
    if (scanner.Take("."))
    {
        timeUs += TakeFraction(scanner);
    }
    return true;
}

bool TakeDate(TextScanner &scanner, std::int64_t &dayUs)
{
    std::array<unsigned, 3> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        if ((i != 0 && !scanner.Take("-") && !scanner.Take("/")) || !scanner.TakeNumber(numbers[i]))
        {
            return false;
        }
    }
    const bool yearFirst = numbers[0] > 31;
    const auto [year, month, day] = yearFirst ? numbers : std::array<unsigned, 3>{numbers[2], numbers[0], numbers[1]};
    if (year < 1970 || year > 9999)
    {
        return false;
    }
    const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)), std::chrono::month(month),
                                           std::chrono::day(day)};
    dayUs = date.ok() ? std::chrono::sys_days(date).time_since_epoch().count() * kUsPerDay : 0;
    return date.ok();
}

std::string TimeOfDayText(std::int64_t timeUs)
{
    const auto ms = static_cast<unsigned long>((timeUs % kUsPerDay) / 1000);
    return Printed("%02lu:%02lu:%02lu.%03lu", ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60, ms % 1000);
}

std::string DateText(std::int64_t timeUs)
{
    if (timeUs < 365 * kUsPerDay)
    {
        return {};
    }
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(timeUs / kUsPerDay))};
    return Printed("%04d-%02u-%02u", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                   static_cast<unsigned>(date.day()));
}

std::string DurationText(std::int64_t durationUs)
{
    const double seconds = static_cast<double>(durationUs) / kUsPerSecond;
    return seconds < 1    ? Printed("%.0f ms", seconds * 1000)
           : seconds < 90 ? Printed("%.1f s", seconds)
                          : Printed("%.0f min", seconds / 60);
}

} // namespace tarn_host
