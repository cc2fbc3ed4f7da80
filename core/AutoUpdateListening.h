// The camera's auto-update event, listened to while an output runs.
#pragma once

#include "platform/MediaFoundation.h"

#include <memory>
#include <string>

#include "ks/KsEventListener.h"

namespace mft_core
{

// A camera without the event is served like any other, it only announces nothing. Ends with its owner or before;
// what is called after the end, or before Init, has no effect. Confined to what its transform's lock guards.
class AutoUpdateListening
{
  public:
    AutoUpdateListening() = default;
    ~AutoUpdateListening();
    AutoUpdateListening(const AutoUpdateListening &) = delete;
    AutoUpdateListening &operator=(const AutoUpdateListening &) = delete;

    // Fails as KsEventListener::Init does.
    HRESULT Init(IKsControl *filterKsControl, const std::string &ownerName);

    // E_UNEXPECTED before Init and after the end.
    HRESULT RegisterObserver(std::shared_ptr<KsEventsObserver> observer);
    void UnregisterObserver(const std::shared_ptr<KsEventsObserver> &observer);

    // S_OK while it runs already, and for a camera that does not have the event. Fails when the camera refuses, and
    // when a former stop is still under way after waiting for it once more: the stream would run without its events.
    HRESULT Start();
    // Waits for the stop, see KsEventListener::kStopTimeoutMs. A listener that hangs is traced and keeps no stream
    // alive.
    void Stop();
    // Stops and lets go of the camera; a listener that hangs does so by itself when its wait has ended.
    void End();

  private:
    ComPtr<KsEventListener> listener;
};

} // namespace mft_core
