// A message or an event as one readable line.
#pragma once

#include "trace/TraceRecord.h"
#include "trace/TraceText.h"

namespace mft_utils
{

// "error", "info" or "verbose"; what is below every level is information.
const char *TraceLevelName(TraceLevel level) noexcept;

// As in ' hr=0x80004005 Name="text"'.
void AppendFields(TraceText &text, const TraceEvent &event) noexcept;

// Time of day (UTC), process, thread, level, function or event, then text or fields. Confined.
class TraceLine : public TraceText
{
  public:
    explicit TraceLine(const TraceMessage &message) noexcept;
    explicit TraceLine(const TraceEvent &event) noexcept;
};

} // namespace mft_utils
