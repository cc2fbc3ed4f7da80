#include "ks/MFPutWaitingWorkItemWrapper.h"

#include <mutex>
#include <utility>

#include "base/CallbackInFlight.h"
#include "base/ComObject.h"
#include "trace/Guard.h"

using mft_utils::CallbackInFlight;
using user_space_frameworks::ComObject;
using user_space_frameworks::CriticalSection;
using user_space_frameworks::MakeCom;

namespace mft_core
{

// What the platform holds during one wait, in place of the caller's result and callback. It may call back any number of
// times, at once or late, and never lets go of a cancelled wait's result (Wine 8, which also leaves the cancelled
// status in it): the first call hands on what the caller gave and lets go of it, later ones find nothing to do.
class MFPutWaitingWorkItemWrapper::PendingWait : public ComObject<IMFAsyncCallback>
{
  public:
    PendingWait(IMFAsyncResult *result, IMFAsyncCallback *callback) : callersResult(result), callersCallback(callback)
    {
        inFlight.Begin();
    }

    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *result) noexcept override
    {
        CallbackInFlight late;
        late.Begin();
        {
            const std::scoped_lock guard(lock);
            if (cancels > 0) // perhaps from within the cancel, whose caller may hold any lock
            {
                calledWhileCancelling = true;
                return S_OK;
            }
        }
        return Deliver(result->GetStatus());
    }

    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) noexcept override
    {
        return E_NOTIMPL;
    }

    HRESULT Deliver(HRESULT status) noexcept
    {
        return mft_utils::Guarded([&]() -> HRESULT {
            user_space_frameworks::UniqueLock guard(lock);
            const CallbackInFlight ended = std::move(inFlight); // let go of last
            const ComPtr<IMFAsyncResult> result = std::move(callersResult);
            const ComPtr<IMFAsyncCallback> callback = std::move(callersCallback);
            guard.unlock();
            if (!callback)
            {
                return S_OK;
            }
            CHECK_HR(result->SetStatus(status));
            return callback->Invoke(result.Get());
        });
    }

    bool IsDelivered()
    {
        const std::scoped_lock guard(lock);
        return !callersCallback;
    }

    void BeginCancel()
    {
        const std::scoped_lock guard(lock);
        ++cancels;
    }

    // True when the platform has called meanwhile.
    bool EndCancel()
    {
        const std::scoped_lock guard(lock);
        --cancels;
        return calledWhileCancelling;
    }

    CriticalSection cancelGate; // held during a cancel; taken before lock

  private:
    CriticalSection lock;
    ComPtr<IMFAsyncResult> callersResult TARN_GUARDED_BY(lock);
    ComPtr<IMFAsyncCallback> callersCallback TARN_GUARDED_BY(lock);
    CallbackInFlight inFlight TARN_GUARDED_BY(lock);
    unsigned cancels TARN_GUARDED_BY(lock) = 0;
    bool calledWhileCancelling TARN_GUARDED_BY(lock) = false;
};

// The work item that ends a cancelled wait, on another thread than the cancel and after it.
class MFPutWaitingWorkItemWrapper::CancelledWait : public ComObject<IMFAsyncCallback>
{
  public:
    explicit CancelledWait(ComPtr<PendingWait> cancelledWait) : wait(std::move(cancelledWait))
    {
        inFlight.Begin();
    }

    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *) noexcept override
    {
        {
            const std::scoped_lock afterTheCancel(wait->cancelGate);
            if (revoked)
            {
                return S_OK;
            }
        }
        return wait->Deliver(MF_E_OPERATION_CANCELLED);
    }

    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) noexcept override
    {
        return E_NOTIMPL;
    }

    bool revoked = false; // guarded by the wait's gate

  private:
    CallbackInFlight inFlight;
    const ComPtr<PendingWait> wait;
};

MFPutWaitingWorkItemWrapper::MFPutWaitingWorkItemWrapper() = default;
MFPutWaitingWorkItemWrapper::~MFPutWaitingWorkItemWrapper() = default;

HRESULT MFPutWaitingWorkItemWrapper::WaitAsync(HANDLE handle, IMFAsyncResult *result, IMFAsyncCallback *callback)
{
    CHECK_POINTER(result);
    CHECK_POINTER(callback);
    const auto wait = MakeCom<PendingWait>(result, callback);
    ComPtr<IMFAsyncResult> waitResult;
    CHECK_HR(MFCreateAsyncResult(nullptr, wait.Get(), nullptr, &waitResult));

    const std::scoped_lock guard(lock);
    MFWORKITEM_KEY newKey = 0;
    CHECK_HR(PutOneAtATime(handle, waitResult.Get(), newKey));
    key = newKey;
    event = handle;
    pending = wait;
    return S_OK;
}

// Wine 8 loses one of two keys when the first waits of a process begin on two threads at once; such a wait cannot be
// cancelled any more.
HRESULT MFPutWaitingWorkItemWrapper::PutOneAtATime(HANDLE handle, IMFAsyncResult *result, MFWORKITEM_KEY &newKey)
{
    static CriticalSection firstUse;
    const std::scoped_lock guard(firstUse);
    CHECK_HR(MFPutWaitingWorkItem(handle, 0, result, &newKey));
    return S_OK;
}

HRESULT MFPutWaitingWorkItemWrapper::Cancel()
{
    return mft_utils::Guarded([&]() -> HRESULT {
        ComPtr<PendingWait> wait;
        MFWORKITEM_KEY cancelledKey = 0;
        HANDLE waitedFor = nullptr;
        {
            const std::scoped_lock guard(lock);
            wait = pending;
            cancelledKey = key;
            waitedFor = event;
        }
        if (!wait || wait->IsDelivered())
        {
            return MF_E_NOT_FOUND;
        }
        const std::scoped_lock gate(wait->cancelGate);
        // The platform need not call back after a cancel. Put first: when that fails nothing has changed.
        const auto ending = MakeCom<CancelledWait>(wait);
        CHECK_HR(MFPutWorkItem2(MFASYNC_CALLBACK_QUEUE_MULTITHREADED, 0, ending.Get(), nullptr));
        wait->BeginCancel();
        const HRESULT cancelled = MFCancelWorkItem(cancelledKey);
        if (wait->EndCancel())
        {
            return S_OK;
        }
        if (cancelled == MF_E_NOT_FOUND)
        {
            SetEvent(waitedFor); // the key may be of a wait that goes on, which must end before the event does
            return S_OK;
        }
        ending->revoked = FAILED(cancelled);
        CHECK_HR_AS("MFCancelWorkItem(key)", cancelled);
        return S_OK;
    });
}

} // namespace mft_core
