// A part of the device transform whose entry points are recorded.
#pragma once

#include "platform/DeviceTransform.h"

#include <source_location>
#include <utility>

#include "base/Object.h"
#include "recorder/CallValues.h"
#include "recorder/DeviceEventRecorder.h"
#include "trace/Guard.h"

namespace mft_core
{

// Virtual base of the transform's parts: they share one recorder, which the transform begins. Thread-safe.
class RecordedPart : public virtual user_space_frameworks::Object
{
  protected:
    RecordedPart() : Object("Recorded part") {}

    // Frame of a public entry point, see EntryPoint; what is given and what is taken are mft_der::Values.
    template <class Given, class Taken, class Body>
    HRESULT Recorded(std::uint16_t call, Given &&given, Taken &&taken, Body &&body,
                     std::source_location location = std::source_location::current()) noexcept
    {
        return mft_utils::EntryPoint(
            GetName(), [&] { return recorder.Around(call, given, taken, std::forward<Body>(body), location); },
            location);
    }

    mft_der::DeviceEventRecorder recorder;
};

} // namespace mft_core
