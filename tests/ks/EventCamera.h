// A camera's auto-update event, and the platform's waits for it, as the tests of the listener want them.
#pragma once

#include "base/UniqueHandle.h"
#include "ks/WaitWorkItemWrapper.h"
#include "tests/ks/FakeFilter.h"

namespace tarn_test
{

inline constexpr ULONG kAutoUpdate = 1;

// Signals like a camera: through its own duplicate of the handle, from enable to disable.
class EventCamera
{
  public:
    EventCamera()
    {
        filter->answer = [this](const FilterCall &call) { return Serve(call); };
    }
    void Signal()
    {
        const std::scoped_lock guard(mutex);
        SetEvent(handle.Get()); // or fails
    }
    bool Enabled()
    {
        const std::scoped_lock guard(mutex);
        return static_cast<bool>(handle);
    }

    ComPtr<FakeFilter> filter = user_space_frameworks::MakeCom<FakeFilter>();
    std::atomic<HRESULT> enableResult{S_OK};
    std::atomic<HRESULT> disableResult{S_OK};
    std::function<void()> duringEnable = [] {};

  private:
    HRESULT Serve(const FilterCall &call)
    {
        auto *data = static_cast<KSEVENTDATA *>(call.data);
        const std::scoped_lock guard(mutex);
        if (!call.hasIdentifier)
        {
            EXPECT_EQ(subscriber, data); // the address is how the filter knows the subscription
            handle.Reset();
            return disableResult;
        }
        const KSEVENT expected = MakeRequest(KSEVENTSETID_VIDCAPTOSTI, kAutoUpdate, KSEVENT_TYPE_ENABLE);
        EXPECT_EQ(0, std::memcmp(&expected, &call.request, sizeof(expected)));
        EXPECT_EQ(24u, call.requestLength);
        EXPECT_EQ(32u, call.dataLength);
        EXPECT_EQ(KSEVENTF_EVENT_HANDLE, data->NotificationType);
        duringEnable();
        if (FAILED(enableResult))
        {
            return enableResult;
        }
        EXPECT_FALSE(handle);
        subscriber = data;
        EXPECT_TRUE(DuplicateHandle(GetCurrentProcess(), data->EventHandle.Event, GetCurrentProcess(),
                                    handle.ReleaseAndGetAddressOf(), 0, FALSE, DUPLICATE_SAME_ACCESS));
        return S_OK;
    }

    std::mutex mutex;
    user_space_frameworks::UniqueHandle handle;
    KSEVENTDATA *subscriber = nullptr;
};

// A platform whose waits end as the test says, in place of the real one while it lives.
struct OwnWaits
{
    OwnWaits() { current = this; }
    ~OwnWaits() { current = nullptr; }
    static void CallBack(IMFAsyncResult *result)
    {
        result->SetStatus(MF_E_OPERATION_CANCELLED);
        reinterpret_cast<MFASYNCRESULT *>(result)->pCallback->Invoke(result);
    }

    static inline OwnWaits *current = nullptr;
    std::vector<ComPtr<IMFAsyncResult>> waits;
    HRESULT cancelResult = S_OK;
    int callsDuringCancel = 0;
};

// Waits that fail as the test says, or are never answered.
class FaultyWait : public mft_core::WaitWorkItemWrapper
{
  public:
    HRESULT WaitAsync(HANDLE, IMFAsyncResult *result, IMFAsyncCallback *) override
    {
        EXPECT_HR(S_OK, result->GetStatus());
        pending = result;
        return waitResult;
    }
    HRESULT Cancel() override { return cancelResult; }

    HRESULT waitResult = S_OK;
    HRESULT cancelResult = S_OK;
    ComPtr<IMFAsyncResult> pending;
};

} // namespace tarn_test
