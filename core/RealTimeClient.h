// Records the work queue that the pipeline assigns (IMFRealTimeClientEx).
#pragma once

#include "platform/RealTimeClientEx.h"

#include "core/RecordedPart.h"
#include "core/WorkQueueParameters.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// Base of the device transform, which supplies IUnknown. Thread-safe.
class RealTimeClient : public IMFRealTimeClientEx, public virtual RecordedPart
{
  public:
    using ComInterface = IMFRealTimeClientEx;

    // Succeeds without registering threads: all processing runs on the assigned work queue.
    HRESULT STDMETHODCALLTYPE RegisterThreadsEx(DWORD *pdwTaskIndex, LPCWSTR wszClassName, LONG lBasePriority) override;
    HRESULT STDMETHODCALLTYPE UnregisterThreads() override;
    // Takes effect with the next topology that is built.
    HRESULT STDMETHODCALLTYPE SetWorkQueueEx(DWORD dwMultithreadedWorkQueueId, LONG lWorkItemBasePriority) override;

  protected:
    RealTimeClient();

    WorkQueueParameters GetWorkQueueParameters() const;

  private:
    mutable user_space_frameworks::CriticalSection lock;
    WorkQueueParameters workQueueParameters TARN_GUARDED_BY(lock);
};

} // namespace mft_core
