// The outcome of a run: a table for people, JSON for scripts, and whether it was good.
#pragma once

#include "platform/MediaFoundation.h"

#include <chrono>
#include <iosfwd>
#include <string>
#include <vector>

#include "sim/FrameSink.h"
#include "tools/frameserver/DeviceTransformSession.h"
#include "tools/runs/PhaseBooks.h"

namespace tarn_host
{

// One output during one phase.
struct OutputReport
{
    DWORD id = 0;
    std::string name;
    std::string format;
    StreamSummary summary;
    AttachmentCounts attachments;
    bool confidenceMapIsOn = false;
};

struct PhaseReport
{
    std::string caption;
    std::string pin; // what the camera delivered, for example "INZI 640x480@30"
    std::vector<OutputReport> outputs;
};

struct PinReport
{
    DWORD id = 0;
    tarn_sim::PinStatistics statistics;
    PhaseBooks::InputFrames taken;
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
    std::string title;
    std::string transform;
    std::string module;
    std::string source;
    std::vector<PhaseReport> phases;
    std::vector<PinReport> pins;
    SessionCounters events;
    std::chrono::microseconds processorTime{}; // of the whole process, camera and frame server too, while it streamed
    bool stalled = false;                      // The run was given up because no frame came any more.
    bool interrupted = false;                  // Ctrl-C came before its end.
    Leftovers leftovers;

    // Of each frame that the camera delivered; 0 without any.
    double ProcessorMicrosecondsPerFrame() const noexcept;

    // One line per thing that was not as it has to be; empty after a good run.
    std::vector<std::string> Problems() const;

    void WriteTable(std::ostream &output) const;
    // What the table's columns mean.
    static void WriteLegend(std::ostream &output);
    // An object, for a document of its own or as part of one.
    std::string ToJson() const;
};

} // namespace tarn_host
