// What a camera's filter says about itself, for a recording from which the camera can be built again.
#pragma once

#include "platform/MediaFoundation.h"

#include "recorder/TransformRecording.h"

namespace mft_der
{

// Asks the filter for its attributes, streams, media types and topology nodes and records the answers. What it does not
// answer is left out.
void RecordCamera(const TransformRecording &transform, IMFTransform *filter) noexcept;

} // namespace mft_der
