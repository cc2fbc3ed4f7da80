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

    // MF_E_NOT_FOUND when nothing is pending: the callback has run or is about to.
    virtual HRESULT Cancel() = 0;
};

} // namespace mft_core
