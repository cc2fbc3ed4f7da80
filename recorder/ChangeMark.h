// Tells a recording where a part of the transform's state changes.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "recorder/CallUnderWay.h"
#include "recorder/TransformRecording.h"

namespace mft_der
{

// For what has a lock of its own; may outlive the transform. Tells nothing where nothing is recorded. Thread-safe.
class ChangeMark
{
  public:
    ChangeMark() = default;
    explicit ChangeMark(std::shared_ptr<const TransformRecording> transformRecording)
        : transform(std::move(transformRecording))
    {
    }

    // What changes is a TARN_CHANGE_...; call it under the lock that decides.
    void Tell(std::uint16_t what) const noexcept
    {
        if (transform)
        {
            transform->Write({.type = TARN_RECORD_CHANGE, .subject = what, .entry = CallUnderWay::OfThisThread()},
                             [](RecordBuilder &) {});
        }
    }

  private:
    std::shared_ptr<const TransformRecording> transform;
};

} // namespace mft_der
