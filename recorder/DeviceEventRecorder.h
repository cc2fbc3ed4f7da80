// The recorder of one device transform.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "recorder/AttributeEncoder.h"
#include "recorder/CallUnderWay.h"
#include "recorder/ChangeMark.h"
#include "recorder/SampleRecorder.h"
#include "recorder/TransformRecording.h"

namespace mft_core
{
class IKsControlsObserver;
class KsEventsObserver;
} // namespace mft_core

namespace mft_der
{

// Off until Begin, and for good where nothing is to be recorded; then each call costs one test. Nothing here fails or
// changes the recorded call. Begin is confined, the rest thread-safe.
class DeviceEventRecorder
{
  public:
    // Records from here on, when the folder exists.
    void Begin(const std::wstring &folder, const std::string &objectName) noexcept;

    bool IsEnabled() const noexcept
    {
        return transform != nullptr;
    }

    // Runs `body` in an exception guard, as a recorded call: its arguments before, its result and what it gave out
    // after. Both are told by functions that take a RecordBuilder; the latter runs after a success only.
    template <class Arguments, class Results, class Body>
    HRESULT Around(std::uint16_t call, Arguments &&arguments, Results &&results, Body &&body,
                   std::source_location location = std::source_location::current()) noexcept
    {
        if (!IsEnabled())
        {
            return mft_utils::Guarded(std::forward<Body>(body), location);
        }
        const std::uint64_t outer = CallUnderWay::OfThisThread();
        const std::uint64_t entry =
            transform->Write({.type = TARN_RECORD_CALL, .subject = call, .entry = outer}, arguments);
        const CallUnderWay inside(entry, outer);
        const HRESULT result = mft_utils::Guarded(std::forward<Body>(body), location);
        transform->Write({.type = TARN_RECORD_RETURN, .subject = call, .result = result, .entry = entry},
                         [&](RecordBuilder &values) {
                             if (SUCCEEDED(result))
                             {
                                 results(values);
                             }
                         });
        return result;
    }

    // An event that the transform raises, before it can be fetched. `describe` takes a RecordBuilder.
    template <class Describe>
    void Event(Describe &&describe) const noexcept
    {
        if (IsEnabled())
        {
            transform->Write({.type = TARN_RECORD_EVENT, .entry = CallUnderWay::OfThisThread()},
                             std::forward<Describe>(describe));
        }
    }

    SampleRecorder &Samples() noexcept
    {
        return samples;
    }
    // Bytes or hash of a sample of the call that this thread is in.
    void Picture(const SampleIdentity &identity, IMFSample *sample) const noexcept;

    // From here on the call that this thread is in changes the transform's state, and no other one does.
    void ChangeBegins() const noexcept
    {
        ChangeMark(transform).Tell(TARN_CHANGE_BEGINS);
    }
    // What this output held is gone; call it under the output's lock.
    void OutputEmptied(std::uint32_t streamId) const noexcept
    {
        if (IsEnabled())
        {
            transform->Write({.type = TARN_RECORD_CHANGE,
                              .subject = TARN_CHANGE_OUTPUT_EMPTIED,
                              .entry = CallUnderWay::OfThisThread()},
                             [&](RecordBuilder &values) { values.U32(TARN_VALUE_STREAM, streamId); });
        }
    }
    // For parts that have a lock of their own.
    ChangeMark Changes() const noexcept
    {
        return ChangeMark(transform);
    }

    // The rest is to be called while it is enabled.
    void Camera(IMFTransform *filter) const noexcept;

    // Observers; each may outlive the transform.
    std::shared_ptr<mft_core::IKsControlsObserver> ApplicationTraffic() const;
    // A control that records what goes to the camera's.
    ComPtr<IKsControl> BeforeCamera(const ComPtr<IKsControl> &filterControl) const;
    std::shared_ptr<mft_core::KsEventsObserver> CameraEvents(const GUID &set, ULONG id) const;

  private:
    std::shared_ptr<const TransformRecording> transform;
    SampleRecorder samples;
};

} // namespace mft_der
