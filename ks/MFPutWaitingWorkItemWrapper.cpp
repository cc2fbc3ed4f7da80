#include "ks/MFPutWaitingWorkItemWrapper.h"

#include <mutex>
#include <utility>

#include "base/ComObject.h"
#include "trace/Guard.h"

namespace mft_core
{

namespace
{

// What the platform holds during one wait, in place of the caller's result and callback. Wine 8 never releases the
// result of a cancelled item, which would keep the callback's object alive for good, and leaves the cancelled status in
// it; this lets go of both when it has run.
class PendingWait : public user_space_frameworks::ComObject<IMFAsyncCallback>
{
  public:
    PendingWait(IMFAsyncResult *result, IMFAsyncCallback *callback) : callersResult(result), callersCallback(callback)
    {
    }

    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *result) noexcept override
    {
        return mft_utils::Guarded([&]() -> HRESULT {
            const ComPtr<IMFAsyncResult> forwarded = std::move(callersResult);
            const ComPtr<IMFAsyncCallback> callback = std::move(callersCallback);
            CHECK_POINTER(callback);
            CHECK_HR(forwarded->SetStatus(result->GetStatus()));
            return callback->Invoke(forwarded.Get());
        });
    }

    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) noexcept override
    {
        return E_NOTIMPL;
    }

  private:
    ComPtr<IMFAsyncResult> callersResult;
    ComPtr<IMFAsyncCallback> callersCallback;
};

} // namespace

HRESULT MFPutWaitingWorkItemWrapper::WaitAsync(HANDLE handle, IMFAsyncResult *result, IMFAsyncCallback *callback)
{
    CHECK_POINTER(result);
    CHECK_POINTER(callback);
    const auto wait = user_space_frameworks::MakeCom<PendingWait>(result, callback);
    ComPtr<IMFAsyncResult> waitResult;
    CHECK_HR(MFCreateAsyncResult(nullptr, wait.Get(), nullptr, &waitResult));

    const std::scoped_lock guard(lock);
    MFWORKITEM_KEY newKey = 0;
    CHECK_HR(MFPutWaitingWorkItem(handle, 0, waitResult.Get(), &newKey));
    key = newKey;
    return S_OK;
}

HRESULT MFPutWaitingWorkItemWrapper::Cancel()
{
    const std::scoped_lock guard(lock);
    return key != 0 ? MFCancelWorkItem(key) : MF_E_NOT_FOUND;
}

} // namespace mft_core
