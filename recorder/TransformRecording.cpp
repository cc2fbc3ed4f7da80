#include "recorder/TransformRecording.h"

namespace mft_der
{

namespace
{
constexpr std::uint16_t kCreated = 1;
constexpr std::uint16_t kReleased = 0;
} // namespace

TransformRecording::TransformRecording(std::unique_ptr<RecordingShare> recordingShare, const std::string &objectName)
    : share(std::move(recordingShare)), number(share->Recording().NewTransform())
{
    Write({.type = TARN_RECORD_TRANSFORM, .subject = kCreated},
          [&](RecordBuilder &values) { values.Text(TARN_VALUE_NAME, objectName); });
}

TransformRecording::~TransformRecording()
{
    Write({.type = TARN_RECORD_TRANSFORM, .subject = kReleased}, [](RecordBuilder &) {});
}

} // namespace mft_der
