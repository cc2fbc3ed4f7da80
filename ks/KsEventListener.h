// Listens to one KS event of the camera filter and tells its observers each time it is signalled.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <memory>
#include <string>

#include "ks/KsEventsObserver.h"
#include "ks/ObserverList.h"
#include "ks/WaitWorkItemWrapper.h"
#include "base/ComObject.h"
#include "base/CriticalSection.h"
#include "base/UniqueHandle.h"

namespace mft_core
{

// Owned by the transform, which calls Uninit before its last Release: from Init to Uninit the listener and its async
// result refer to each other. A pending wait holds a reference too. Thread-safe; the camera, the observers and the wait
// for a stop are never reached with the lock held.
class KsEventListener : public user_space_frameworks::ComObject<IMFAsyncCallback>, public user_space_frameworks::Object
{
  public:
    static constexpr DWORD kStopTimeoutMs = 5000;

    KsEventListener(const GUID &set, ULONG id, std::string objectName, DWORD stopTimeoutMs = kStopTimeoutMs);
    KsEventListener(const GUID &set, ULONG id, std::string objectName, DWORD stopTimeoutMs,
                    std::unique_ptr<WaitWorkItemWrapper> wrapper);

    // Prepares to listen. E_POINTER for null, E_UNEXPECTED when initialized already, E_OUTOFMEMORY without an event,
    // failures of MFCreateAsyncResult; nothing is kept then.
    HRESULT Init(IKsControl *filterKsControl);

    // Enables the event and begins to wait. E_OUTOFMEMORY before Init, E_UNEXPECTED while it runs or stops (which a
    // camera may answer too: see IsStarted), E_ABORT when it was stopped meanwhile, failures of the camera and of the
    // wait; it does not run then.
    HRESULT Start();

    // True from a start, also while it enables the event, to the next stop.
    bool IsStarted();

    // Returns when the event is disabled and no notification is under way; S_OK at once when it does not run. It can
    // be started again then. ERROR_TIMEOUT as an HRESULT when that takes too long: it goes on stopping and Stop may be
    // called again. A failed cancel is returned and leaves it running. A second caller waits for the first. Not to be
    // called from an observer.
    HRESULT Stop() TARN_EXCLUDES(lock);

    // Stops, then gives up everything Init made. After a failure of Stop, which it returns, that happens by itself when
    // the wait has ended, it tells no observer any more and cannot be started before. E_UNEXPECTED when it was started
    // meanwhile.
    HRESULT Uninit();

    // See ObserverList.
    HRESULT RegisterObserver(std::shared_ptr<KsEventsObserver> observer);
    HRESULT UnregisterObserver(const std::shared_ptr<KsEventsObserver> &observer);

    // IMFAsyncCallback: one wait has ended. E_UNEXPECTED when the listener does not run.
    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *result) noexcept override;
    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *flags, DWORD *queue) noexcept override;

  private:
    enum class State : std::uint8_t
    {
        NotInitialized = 0,
        Initialized = 1,
        Started = 2,
        Stopping = 3
    };

    HRESULT EnableEvent() noexcept TARN_EXCLUDES(lock);
    HRESULT DisableEvent() noexcept TARN_EXCLUDES(lock);
    HRESULT WaitAsyncForNotification() TARN_REQUIRES(lock);
    void FinishStop(bool disableEvent) noexcept TARN_EXCLUDES(lock);
    HRESULT AwaitStop(HANDLE completed);
    bool IsRunning(); // until a stop has completed
    bool IsGivenUp();

    // What is released after the lock: the result holds a reference on this object, the control may be anything.
    struct Released
    {
        ComPtr<IMFAsyncResult> result;
        ComPtr<IKsControl> control;
    };
    void GiveUp(Released &released) noexcept TARN_REQUIRES(lock);

    const GUID setGuid;
    const ULONG eventId;
    const DWORD stopTimeout;

    // Made by Init, given up by Uninit, which waits until the listener has stopped: what runs between may read them.
    ComPtr<IKsControl> ksControl;
    KSEVENTDATA kseventdata{}; // the filter knows the subscription by this address
    user_space_frameworks::UniqueHandle notificationEvent;
    std::shared_ptr<user_space_frameworks::UniqueHandle> stopCompletedEvent; // shared with those who wait for it
    ComPtr<IMFAsyncResult> asyncResult;

    const std::unique_ptr<WaitWorkItemWrapper> workItemWrapper;
    ObserverList<KsEventsObserver> observers;

    user_space_frameworks::CriticalSection stopGate; // one waits for a stop at a time; taken before lock
    user_space_frameworks::CriticalSection lock;
    State state TARN_GUARDED_BY(lock) = State::NotInitialized;
    bool givenUp TARN_GUARDED_BY(lock) = false; // the end of the stop under way gives up what Init made
};

} // namespace mft_core
