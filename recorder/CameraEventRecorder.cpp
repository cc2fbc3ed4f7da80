#include "recorder/CameraEventRecorder.h"

#include <utility>

#include "recorder/AttributeEncoder.h"

namespace mft_der
{

namespace
{
// The thread of the notification is in no call of its own.
class EventEnd final : public mft_core::KsEventsObserver
{
  public:
    EventEnd() : KsEventsObserver("Camera event's end") {}

    void OnEvent() override
    {
        CallUnderWay::Exchange(0);
    }
};
} // namespace

CameraEventRecorder::CameraEventRecorder(std::shared_ptr<const TransformRecording> recordedTransform, const GUID &set,
                                         ULONG id)
    : KsEventsObserver("Camera event recorder"), transform(std::move(recordedTransform)), eventSet(set), eventId(id)
{
}

void CameraEventRecorder::OnEvent()
{
    CallUnderWay::Exchange(transform->Write({.type = TARN_RECORD_DEVICE_EVENT}, [&](RecordBuilder &values) {
        values.Guid(TARN_VALUE_SET, BytesOf(eventSet)).U32(TARN_VALUE_ID, eventId);
    }));
}

std::shared_ptr<mft_core::KsEventsObserver> CameraEventRecorder::End()
{
    return std::make_shared<EventEnd>();
}

} // namespace mft_der
