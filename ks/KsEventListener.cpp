#include "ks/KsEventListener.h"

#include <mutex>
#include <utility>

#include "ks/MFPutWaitingWorkItemWrapper.h"
#include "trace/Guard.h"
#include "base/HResultFromWin32.h"

namespace mft_core
{

using user_space_frameworks::UniqueHandle;

KsEventListener::KsEventListener(const GUID &set, ULONG id, std::string objectName, DWORD stopTimeoutMs)
    : KsEventListener(set, id, std::move(objectName), stopTimeoutMs, std::make_unique<MFPutWaitingWorkItemWrapper>())
{
}

KsEventListener::KsEventListener(const GUID &set, ULONG id, std::string objectName, DWORD stopTimeoutMs,
                                 std::unique_ptr<WaitWorkItemWrapper> wrapper)
    : Object(std::move(objectName)), setGuid(set), eventId(id), stopTimeout(stopTimeoutMs),
      workItemWrapper(std::move(wrapper))
{
}

HRESULT KsEventListener::Init(IKsControl *filterKsControl)
{
    CHECK_POINTER_AS("ksControl", filterKsControl, E_POINTER);
    const std::scoped_lock guard(lock);
    if (state != State::NotInitialized)
    {
        TRACE_ERROR("%s: initialized already", GetName());
        return E_UNEXPECTED;
    }
    auto stopCompleted = std::make_shared<UniqueHandle>(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    CHECK_POINTER_AS("stopCompletedEvent", *stopCompleted, E_OUTOFMEMORY);
    UniqueHandle notification(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    CHECK_POINTER_AS("kseventdata.EventHandle.Event", notification, E_OUTOFMEMORY);
    CHECK_HR(MFCreateAsyncResult(nullptr, this, nullptr, &asyncResult));

    ksControl = filterKsControl;
    kseventdata = {};
    kseventdata.NotificationType = KSEVENTF_EVENT_HANDLE;
    kseventdata.EventHandle.Event = notification.Get();
    notificationEvent = std::move(notification);
    stopCompletedEvent = std::move(stopCompleted);
    state = State::Initialized;
    return S_OK;
}

HRESULT KsEventListener::Start()
{
    {
        const std::scoped_lock guard(lock);
        if (!notificationEvent || stopCompletedEvent == nullptr || asyncResult == nullptr)
        {
            TRACE_ERROR("%s: not initialized", GetName());
            return E_OUTOFMEMORY;
        }
        if (state != State::Initialized)
        {
            // The transform starts it with every output; the caller knows whether this is an error.
            TRACE_INFO("%s: not ready to start, state %u", GetName(), static_cast<unsigned>(state));
            return E_UNEXPECTED;
        }
        state = State::Started;
        ResetEvent(notificationEvent.Get()); // a signal that came after the last stop is not news
    }
    HRESULT result = EnableEvent();
    const bool enabled = SUCCEEDED(result);
    if (enabled)
    {
        const std::scoped_lock guard(lock);
        result = [&]() -> HRESULT {
            lock.AssertHeld();
            if (state != State::Started)
            {
                return E_ABORT;
            }
            CHECK_HR(WaitAsyncForNotification());
            return S_OK;
        }();
        if (SUCCEEDED(result))
        {
            return S_OK;
        }
    }
    // No wait is pending, so nobody else ends this. A stop that came meanwhile waits for it.
    FinishStop(enabled);
    return result;
}

bool KsEventListener::IsStarted()
{
    const std::scoped_lock guard(lock);
    return state == State::Started;
}

bool KsEventListener::IsRunning()
{
    const std::scoped_lock guard(lock);
    return state == State::Started || state == State::Stopping;
}

bool KsEventListener::IsGivenUp()
{
    const std::scoped_lock guard(lock);
    return givenUp;
}

HRESULT KsEventListener::Stop()
{
    if (!IsRunning())
    {
        return S_OK;
    }
    const std::scoped_lock gate(stopGate); // the event lets one through
    std::shared_ptr<UniqueHandle> completed;
    {
        const std::scoped_lock guard(lock);
        if (!IsRunning()) // the one that was let through before has seen to it
        {
            return S_OK;
        }
        const State before = std::exchange(state, State::Stopping);
        if (before == State::Started)
        {
            ResetEvent(stopCompletedEvent->Get()); // left over from a stop that nobody waited for to its end
        }
        // Nothing to cancel means that a notification is under way; it sees the state and ends the listener.
        const HRESULT cancelled = workItemWrapper->Cancel();
        if (FAILED(cancelled) && cancelled != MF_E_NOT_FOUND)
        {
            state = before;
            CHECK_HR_AS("workItemWrapper->Cancel()", cancelled);
        }
        completed = stopCompletedEvent;
    }
    return AwaitStop(completed->Get());
}

HRESULT KsEventListener::AwaitStop(HANDLE completed)
{
    const ULONGLONG end = GetTickCount64() + stopTimeout;
    for (;;)
    {
        const ULONGLONG now = GetTickCount64();
        const DWORD waited = WaitForSingleObject(completed, now < end ? static_cast<DWORD>(end - now) : 0);
        const HRESULT failure =
            waited == WAIT_TIMEOUT ? HRESULT_FROM_WIN32(ERROR_TIMEOUT) : mft_utils::HResultFromLastError();
        const std::scoped_lock guard(lock);
        if (state != State::Stopping)
        {
            return S_OK;
        }
        if (waited != WAIT_OBJECT_0) // else the signal was another stop's
        {
            TRACE_ERROR("%s: the stop did not complete, wait result %lu, hr 0x%08lX", GetName(), waited,
                        static_cast<unsigned long>(failure));
            return failure;
        }
    }
}

HRESULT KsEventListener::Uninit()
{
    const HRESULT stopped = Stop();
    Released released;
    const std::scoped_lock guard(lock);
    if (state == State::NotInitialized)
    {
        return S_OK;
    }
    if (FAILED(stopped) && state != State::Initialized)
    {
        state = State::Stopping;
        givenUp = true;
        SetEvent(notificationEvent.Get()); // ends a wait that could not be cancelled
        CHECK_HR_AS("Stop()", stopped);
    }
    if (state != State::Initialized)
    {
        TRACE_ERROR("%s: started while it was given up", GetName());
        return E_UNEXPECTED;
    }
    GiveUp(released);
    return S_OK;
}

void KsEventListener::GiveUp(Released &released) noexcept
{
    state = State::NotInitialized;
    givenUp = false;
    kseventdata = {};
    notificationEvent.Reset();
    stopCompletedEvent.reset();
    released.result.Swap(asyncResult);
    released.control.Swap(ksControl);
}

HRESULT KsEventListener::RegisterObserver(std::shared_ptr<KsEventsObserver> observer)
{
    return observers.Add(std::move(observer));
}

HRESULT KsEventListener::UnregisterObserver(const std::shared_ptr<KsEventsObserver> &observer)
{
    return observers.Remove(observer);
}

HRESULT KsEventListener::Invoke(IMFAsyncResult *result) noexcept
{
    return mft_utils::EntryPoint(GetName(), [&]() -> HRESULT {
        CHECK_POINTER(result);
        if (SUCCEEDED(result->GetStatus()) && !IsGivenUp()) // a cancelled wait is no event
        {
            const auto watching = observers.Snapshot();
            for (const auto &observer : *watching)
            {
                mft_utils::Guarded([&] {
                    observer->OnEvent();
                    return S_OK;
                });
            }
        }

        HRESULT rearmed = S_OK;
        {
            const std::scoped_lock guard(lock);
            if (state == State::Started)
            {
                rearmed = WaitAsyncForNotification();
                if (SUCCEEDED(rearmed))
                {
                    return S_OK;
                }
            }
            else if (state != State::Stopping)
            {
                TRACE_ERROR("%s: notified in state %u", GetName(), static_cast<unsigned>(state));
                return E_UNEXPECTED;
            }
        }
        FinishStop(true);
        return rearmed;
    });
}

HRESULT KsEventListener::GetParameters(DWORD *, DWORD *) noexcept
{
    return E_NOTIMPL;
}

// A control in this process may throw; Start's clean-up must run all the same.
HRESULT KsEventListener::EnableEvent() noexcept
{
    return mft_utils::Guarded([&]() -> HRESULT {
        KSEVENT event{};
        event.Set = setGuid;
        event.Id = eventId;
        event.Flags = KSEVENT_TYPE_ENABLE;
        ULONG bytesReturned = 0;
        CHECK_HR(ksControl->KsEvent(&event, sizeof(KSEVENT), &kseventdata, sizeof(KSEVENTDATA), &bytesReturned));
        return S_OK;
    });
}

HRESULT KsEventListener::DisableEvent() noexcept
{
    return mft_utils::Guarded([&]() -> HRESULT {
        ULONG bytesReturned = 0;
        CHECK_HR(ksControl->KsEvent(nullptr, 0, &kseventdata, sizeof(kseventdata), &bytesReturned));
        return S_OK;
    });
}

HRESULT KsEventListener::WaitAsyncForNotification()
{
    // Without a wait nobody would end the listener, so an exception must not get past the callers' clean-up.
    return mft_utils::Guarded([&]() -> HRESULT {
        CHECK_HR(asyncResult->SetStatus(S_OK)); // the last wait may have been cancelled
        CHECK_HR_AS("workItemWrapper->WaitAsync(kseventdata.EventHandle.Event, asyncResult, this)",
                    workItemWrapper->WaitAsync(kseventdata.EventHandle.Event, asyncResult.Get(), this));
        return S_OK;
    });
}

// The last step of a listener that no longer waits. Nobody else touches the subscription until the state changes.
void KsEventListener::FinishStop(bool disableEvent) noexcept
{
    if (disableEvent)
    {
        DisableEvent(); // its failure is traced and does not keep the listener from stopping
    }
    Released released;
    const std::scoped_lock guard(lock);
    state = State::Initialized;
    SetEvent(stopCompletedEvent->Get());
    if (givenUp)
    {
        GiveUp(released);
    }
}

} // namespace mft_core
