// The wait of Media Foundation's waiting work items.
#pragma once

#include "ks/WaitWorkItemWrapper.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// A pending wait holds references on the result and the callback until the callback has run. Thread-safe.
class MFPutWaitingWorkItemWrapper : public WaitWorkItemWrapper
{
  public:
    // The result carries the status of this wait when the callback runs. E_POINTER for null, failures of
    // MFCreateAsyncResult and MFPutWaitingWorkItem.
    HRESULT WaitAsync(HANDLE handle, IMFAsyncResult *result, IMFAsyncCallback *callback) override;

    // Failures of MFCancelWorkItem; MF_E_NOT_FOUND before the first wait.
    HRESULT Cancel() override;

  private:
    user_space_frameworks::CriticalSection lock;
    MFWORKITEM_KEY key TARN_GUARDED_BY(lock) = 0; // of the last wait
};

} // namespace mft_core
