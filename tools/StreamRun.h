// One run of "tarn-host stream": camera, session and collectors from the first reference to the last.
#pragma once

#include "platform/MediaFoundation.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "sim/SimulatedCamera.h"
#include "tools/DeviceTransformSession.h"
#include "tools/OutputCollector.h"
#include "tools/ProgressLine.h"
#include "tools/StreamOptions.h"
#include "tools/StreamReport.h"

namespace tarn_host
{

// Between camera and transform: takes frames on the capture thread, samples and pin states on the event loop thread.
// Run is confined; it needs a PlatformSession around it.
class StreamRun final : private SessionListener, private tarn_sim::IFrameSink
{
  public:
    // `streamOptions` outlive the run.
    explicit StreamRun(const StreamOptions &streamOptions);
    ~StreamRun() override;

    // Streams, stops, and lets go of everything. Throws UsageError for sizes and formats that are not offered and
    // for unusable frames, HostError when a step fails. Lost frames are told in the report.
    StreamReport Run();
    // The frames kept of each output. Call after Run.
    Picture DrawFrames(const std::string &title) const;

  private:
    HRESULT OnInputState(DWORD inputId, DeviceStreamState state, IMFMediaType *type) override;
    void OnOutputSample(DWORD outputId, IMFSample *sample) override;
    void OnSessionFailure() override;
    void OnFrame(DWORD streamId, IMFSample *sample) override;

    void CreateCamera();
    void ChooseTypes();
    void StartOutputs();
    void WaitForFrames();
    void StopOutputs();
    void LetGo(StreamReport &report);
    bool AllFramesIn() const;
    std::size_t FramesInFlight() const;
    std::uint64_t FramesOut() const;
    std::string ProgressText() const;
    void ThrowOnFailure() const;
    // The input that feeds an output: the one in the same place, or the only one.
    DWORD InputOf(std::size_t outputIndex) const;
    std::size_t ExpectedInputs() const;

    struct Output
    {
        OutputCollector collector;
        ComPtr<IMFMediaType> type;
        DWORD inputId = 0;
    };

    const StreamOptions &options;
    std::uint64_t frameLimit = 0; // Frames per pin; 0: until the time is over.
    std::string sourceText;
    bool stalled = false; // No frame came for too long while there should have been some.
    ComPtr<tarn_sim::SimulatedCamera> camera;
    DeviceTransformSession session;
    std::vector<std::unique_ptr<Output>> outputs; // Fixed before the first frame.
    std::vector<DWORD> pinIds;

    mutable std::mutex lock;
    std::condition_variable progressed;
    HRESULT inputFailure = S_OK; // guarded by lock; the first one
};

} // namespace tarn_host
