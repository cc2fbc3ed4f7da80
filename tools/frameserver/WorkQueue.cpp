#include "tools/frameserver/WorkQueue.h"

#include "tools/command/ExitCode.h"

namespace tarn_host
{

namespace
{

// MF_MULTITHREADED_WORKQUEUE of MFASYNC_WORKQUEUE_TYPE (mfapi.h).
constexpr auto kMultithreaded = static_cast<MFASYNC_WORKQUEUE_TYPE>(2);

} // namespace

WorkQueue::WorkQueue()
{
    ThrowIfFailed(MFAllocateWorkQueueEx(kMultithreaded, &id), "MFAllocateWorkQueueEx");
}

WorkQueue::~WorkQueue()
{
    MFUnlockWorkQueue(id);
}

} // namespace tarn_host
