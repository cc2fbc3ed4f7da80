// The wait of Media Foundation's waiting work items.
#pragma once

#include "ks/WaitWorkItemWrapper.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// A pending wait holds references on the result and the callback until the callback has run, and keeps the module
// loaded. Calls back exactly once, whatever the platform does after a cancel. Thread-safe.
class MFPutWaitingWorkItemWrapper : public WaitWorkItemWrapper
{
  public:
    MFPutWaitingWorkItemWrapper();
    ~MFPutWaitingWorkItemWrapper() override;

    // The result carries the status of this wait when the callback runs. E_POINTER for null, failures of
    // MFCreateAsyncResult and MFPutWaitingWorkItem.
    HRESULT WaitAsync(HANDLE handle, IMFAsyncResult *result, IMFAsyncCallback *callback) override;

    // Failures of MFCancelWorkItem and of the work item that calls back; it can be called again then. May signal the
    // handle.
    HRESULT Cancel() override;

  private:
    class PendingWait;
    class CancelledWait;

    static HRESULT PutOneAtATime(HANDLE handle, IMFAsyncResult *result, MFWORKITEM_KEY &newKey);

    user_space_frameworks::CriticalSection lock;
    // Of the last wait.
    MFWORKITEM_KEY key TARN_GUARDED_BY(lock) = 0;
    HANDLE event TARN_GUARDED_BY(lock) = nullptr; // borrowed: the caller closes it after the callback
    ComPtr<PendingWait> pending TARN_GUARDED_BY(lock);
};

} // namespace mft_core
