// An asynchronous wait for a handle.
#pragma once

#include "platform/MediaFoundation.h"

namespace mft_core
{

// One wait at a time. Thread-safe.
class WaitWorkItemWrapper
{
  public:
    virtual ~WaitWorkItemWrapper() = default;

    // Has `callback` invoked once with `result`, on another thread, when the handle is signalled or the wait cancelled.
    virtual HRESULT WaitAsync(HANDLE handle, IMFAsyncResult *result, IMFAsyncCallback *callback) = 0;

    // S_OK: the callback is about to run, with MF_E_OPERATION_CANCELLED or as if signalled. MF_E_NOT_FOUND when nothing
    // is pending: it has run or is running. The event may be left signalled. Never calls back before it returns.
    virtual HRESULT Cancel() = 0;
};

} // namespace mft_core
