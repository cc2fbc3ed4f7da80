// A message or an event as one readable line.
#pragma once

#include "trace/TraceRecord.h"
#include "trace/TraceText.h"

namespace mft_utils
{

// "error", "info" or "verbose".
const char *TraceLevelName(TraceLevel level) noexcept;

// Time of day (UTC), thread, level, function or event, then text or fields. Confined.
class TraceLine : public TraceText
{
  public:
    explicit TraceLine(const TraceMessage &message) noexcept;
    explicit TraceLine(const TraceEvent &event) noexcept;
};

} // namespace mft_utils
