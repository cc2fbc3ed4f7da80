// Where the answer to BeginGetEvent comes.
#pragma once

#include "platform/MediaFoundation.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "base/ComObject.h"

namespace tarn_replay
{

// Thread-safe.
class EventArrival : public user_space_frameworks::ComObject<IMFAsyncCallback>
{
  public:
    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *asyncResult) override
    {
        const std::scoped_lock hold(lock);
        result = asyncResult;
        arrived.notify_all();
        return S_OK;
    }

    // Null when none comes in time; each is given once.
    ComPtr<IMFAsyncResult> Take(std::chrono::milliseconds limit)
    {
        std::unique_lock hold(lock);
        arrived.wait_for(hold, limit, [this] { return result != nullptr; });
        return std::move(result);
    }
    void Clear()
    {
        Take(std::chrono::milliseconds(0));
    }

  private:
    std::mutex lock;
    std::condition_variable arrived;
    ComPtr<IMFAsyncResult> result; // guarded by lock
};

} // namespace tarn_replay
