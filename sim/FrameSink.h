// Where the simulated camera's frames go, and what became of them.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>

namespace tarn_sim
{

// Receives the camera's frames on its capture thread. The sample is borrowed for the length of the call.
struct IFrameSink
{
    virtual ~IFrameSink() = default;
    virtual void OnFrame(DWORD streamId, IMFSample *sample) = 0;
};

struct PinStatistics
{
    std::uint64_t delivered = 0;   // frames the sink was given
    std::uint64_t dropped = 0;     // due while all buffers were out, or skipped because the sink was too slow
    std::uint64_t failed = 0;      // the source or the platform could not make the frame
    std::uint32_t outstanding = 0; // buffers that somebody still holds
};

} // namespace tarn_sim
