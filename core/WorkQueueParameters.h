// The work queue on which the pipeline wants a transform's processing to run.
#pragma once

#include <windows.h>

namespace mft_core
{

struct WorkQueueParameters
{
    UINT32 workQueueId = 0;
    INT32 workItemBasePriority = 0;
    bool isSet = false; // true once the pipeline has chosen
};

} // namespace mft_core
