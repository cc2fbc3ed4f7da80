// Which frame belongs to which phase of which output, while outputs are started, stopped and restarted under way.
#pragma once

#include "platform/MediaFoundation.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "tools/runs/OutputCollector.h"

namespace tarn_host
{

// Fed by the capture thread (in) and the event loop (out), changed by the run's thread. Thread-safe.
class PhaseBooks
{
  public:
    // One output during one phase.
    struct Stretch
    {
        std::size_t phase;
        bool confidenceMapIsOn;
        OutputCollector collector;
    };

    explicit PhaseBooks(std::size_t framesToShowOfEach) : framesToShow(framesToShowOfEach) {}

    // From here to EndChange a frame may be refused. Every output that runs, or only those in `stopped`, is cut off:
    // frames of it that come meanwhile may get lost.
    void BeginChange(bool restartsAll, std::span<const DWORD> stopped);
    void Remove(DWORD outputId);
    void Add(DWORD outputId, DWORD inputId, const FrameFormat &format);
    // A stretch of the output begins: the next frame counts.
    void Begin(DWORD outputId, std::size_t phase, bool confidenceMapIsOn);
    // A stretch of every running output begins that has none in this phase yet.
    void EndChange(std::size_t phase, bool confidenceMapIsOn);

    // A frame is about to be handed to the transform.
    struct EnteredFrame
    {
        DWORD inputId = 0;
        std::int64_t time = -1;
        std::vector<DWORD> outputs; // in whose books it is
    };
    EnteredFrame FrameIn(DWORD inputId, IMFSample &sample);
    // Takes it out again where it has not come out: it may, of an output that took it before another refused it. False
    // when no frame may be refused now.
    bool FrameRefused(const EnteredFrame &frame);
    // The collector that the frame belongs to; null for one that came while its output was restarted. Throws HostError
    // for an output that never ran.
    OutputCollector *CollectorOf(DWORD outputId, const SampleDetails &details);

    // What became of the frames of one camera pin: their sum is what it delivered.
    struct InputFrames
    {
        std::uint64_t in = 0;      // into the books of at least one output
        std::uint64_t between = 0; // came, or were refused, while outputs were started or stopped
    };
    InputFrames FramesOf(DWORD inputId) const;

    // Every running output was given so many frames in its present stretch.
    bool AllHaveFramesIn(std::uint64_t count) const;
    std::size_t FramesInFlight() const;
    std::uint64_t FramesOut() const;
    // Calls back with each running output's present stretch.
    void ForEachRunning(const std::function<void(const Stretch &)> &visit) const;
    // In the order in which they began. Call when no frame comes any more.
    const std::vector<std::unique_ptr<Stretch>> &Stretches() const;

  private:
    struct RunningOutput
    {
        DWORD inputId = 0;
        FrameFormat format;
        Stretch *stretch = nullptr;     // null while the output is being restarted
        Stretch *former = nullptr;      // the one before
        std::set<std::int64_t> between; // sample times of frames that came meanwhile and have not come out
        std::uint64_t betweenCount = 0; // of those that belong to no stretch's books yet
    };
    void BeginLocked(DWORD outputId, RunningOutput &output, std::size_t phase, bool confidenceMapIsOn);

    const std::size_t framesToShow;
    mutable std::mutex lock;
    std::vector<std::unique_ptr<Stretch>> stretches; // guarded by lock; what they hold stays where it is
    std::map<DWORD, RunningOutput> running;          // guarded by lock
    std::map<DWORD, InputFrames> inputs;             // guarded by lock
    bool isChanging = false;                         // guarded by lock
};

} // namespace tarn_host
