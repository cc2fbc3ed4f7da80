// One way out of the module for traces.
#pragma once

#include <cstdint>

#include "trace/TraceRecord.h"

namespace mft_utils
{

// Lives as long as the module. Thread-safe. A channel tells of a change of its levels with UpdateTraceLevels.
class ITraceChannel
{
  public:
    // The highest level that it wants; 0 for nothing.
    virtual std::uint32_t MessageLevel() const noexcept = 0;
    virtual std::uint32_t EventLevel() const noexcept = 0;
    // Leave out what is above the channel's own level.
    virtual void Write(const TraceMessage &message) noexcept = 0;
    virtual void Write(const TraceEvent &event) noexcept = 0;

  protected:
    ~ITraceChannel() = default;
};

} // namespace mft_utils
