// Trace activity of one sample in one node.
#pragma once

#include "platform/MediaFoundation.h"

#include "trace/TraceLogging.h"

namespace mft_core
{

// Carries "SampleTime", which is asked for only when somebody listens. Confined.
class SampleActivity : public mft_utils::TraceLoggingActivity
{
  public:
    SampleActivity(const char *functionName, IMFSample *sample) noexcept;
};

} // namespace mft_core
