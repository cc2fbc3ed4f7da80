// Records the camera's events as the listener's first observer.
#pragma once

#include "platform/MediaFoundation.h"

#include <atomic>
#include <cstdint>
#include <memory>

#include "ks/KsEventsObserver.h"
#include "recorder/TransformRecording.h"

namespace mft_der
{

// What the observers between this one and the one that End gives do belongs to the event. One notification at a time,
// as the listener does it.
class CameraEventRecorder final : public mft_core::KsEventsObserver
{
  public:
    CameraEventRecorder(std::shared_ptr<const TransformRecording> recordedTransform, const GUID &set, ULONG id);

    void OnEvent() override;

    // The observer to be told last.
    static std::shared_ptr<mft_core::KsEventsObserver> End();

  private:
    const std::shared_ptr<const TransformRecording> transform;
    const GUID eventSet;
    const ULONG eventId;
};

} // namespace mft_der
