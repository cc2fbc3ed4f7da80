// Times of day and dates as logs and traces write them, in microseconds.
#pragma once

#include <cstdint>
#include <string>

#include "tools/diagnosis/TextScanner.h"

namespace tarn_host
{

inline constexpr std::int64_t kUsPerSecond = 1'000'000;
inline constexpr std::int64_t kUsPerDay = 86'400 * kUsPerSecond;

// As in 09:15:02.113482; any number of decimals, and none. False, with an undefined rest, when it is none.
bool TakeTimeOfDay(TextScanner &scanner, std::int64_t &timeUs);
// As in 2026-11-21, 2026/11/21 and 11/21/2026: midnight of that day, since 1970.
bool TakeDate(TextScanner &scanner, std::int64_t &dayUs);

// As in 09:15:02.113.
std::string TimeOfDayText(std::int64_t timeUs);
// As in 2026-11-21; empty for a time without a day.
std::string DateText(std::int64_t timeUs);
// As in "12 ms", "3.2 s", "5 min".
std::string DurationText(std::int64_t durationUs);

} // namespace tarn_host
