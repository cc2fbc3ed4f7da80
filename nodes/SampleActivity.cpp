#include "nodes/SampleActivity.h"

namespace mft_core
{

namespace
{
// 0 for a sample without a time.
LONGLONG TracedTime100ns(IMFSample *sample) noexcept
{
    LONGLONG time100ns = 0;
    if (mft_utils::TraceLoggingEnabled(mft_utils::TraceLevel::Information) && FAILED(sample->GetSampleTime(&time100ns)))
    {
        time100ns = 0;
    }
    return time100ns;
}
} // namespace

SampleActivity::SampleActivity(const char *functionName, IMFSample *sample) noexcept
    : TraceLoggingActivity(functionName, {mft_utils::TraceField::Int64("SampleTime", TracedTime100ns(sample))})
{
}

} // namespace mft_core
