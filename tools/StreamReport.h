// The outcome of a run: a table for people, JSON for scripts, and whether it was good.
#pragma once

#include "platform/MediaFoundation.h"

#include <iosfwd>
#include <string>
#include <vector>

#include "sim/FrameSink.h"
#include "tools/DeviceTransformSession.h"
#include "tools/StreamStatistics.h"

namespace tarn_host
{

struct OutputReport
{
    DWORD id = 0;
    std::string format;
    StreamSummary summary;
};

struct PinReport
{
    DWORD id = 0;
    tarn_sim::PinStatistics statistics;
};

// What was still there after everything was let go. All of it is 0, S_OK and true after a good run.
struct Leftovers
{
    ULONG transformReferences = 0;
    ULONG cameraReferences = 0;
    std::uint32_t frames = 0; // Frames of the camera that somebody still holds.
    HRESULT canUnload = S_OK;
    bool unloaded = true;
};

// Value.
struct StreamReport
{
    std::string transform;
    std::string module;
    std::string source;
    std::vector<OutputReport> outputs;
    std::vector<PinReport> pins;
    SessionCounters events;
    bool stalled = false; // The run was given up because no frame came any more.
    Leftovers leftovers;
    std::string picture; // Empty when none was asked for.

    // One line per thing that was not as it has to be; empty after a good run.
    std::vector<std::string> Problems() const;

    void WriteTable(std::ostream &output) const;
    void WriteJson(std::ostream &output) const;
};

} // namespace tarn_host
