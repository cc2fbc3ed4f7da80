// The texts of messages and events, which are the same in every form of trace.
#pragma once

#include <string_view>

#include "tools/diagnosis/LogRecord.h"

namespace tarn_host
{

// "function: text", "==> function (object)", "function [level]: text" and "function: step failed, hr 0x...". A text
// of another form is a message without a function.
void ReadMessageText(std::string_view text, LogRecord &record);

// The same, as the classic channel records it: without a level where a step failed.
void ReadClassicMessage(std::string_view text, LogRecord &record);

// "name start #12 Field=value Other="a text"": an event, with or without start, stop and activity.
void ReadEventText(std::string_view text, LogRecord &record);

} // namespace tarn_host
