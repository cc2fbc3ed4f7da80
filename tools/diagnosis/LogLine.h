// Lines of the text log, and of traces that were turned into text.
#pragma once

#include <string_view>

#include "tools/diagnosis/LogRecord.h"

namespace tarn_host
{

// "09:15:02.113482  340  344 info    function: text", as the module writes it; the time is that of the day. A note on
// lost lines has neither time nor thread. False when it is no such line.
bool ReadLogLine(std::string_view line, LogRecord &record);

// "[0]0154.0158::11/21/2026-09:15:02.113 [provider]text", as the converters of recorded traces write it: processor,
// process and thread in hexadecimal. False when it is no such line, or not one of the module.
bool ReadConvertedLine(std::string_view line, LogRecord &record);

// Whether a provider's name or id is one of the module's.
bool IsOwnProvider(std::string_view nameOrId) noexcept;

} // namespace tarn_host
