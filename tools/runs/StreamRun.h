// One scenario from the first reference to the last: camera, session and collectors.
#pragma once

#include "platform/MediaFoundation.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sim/SimulatedCamera.h"
#include "tools/pictures/ContactSheet.h"
#include "tools/frameserver/DeviceTransformSession.h"
#include "tools/pictures/FrameWriter.h"
#include "tools/frameserver/LoadedModule.h"
#include "tools/runs/PhaseBooks.h"
#include "tools/command/ProgressLine.h"
#include "tools/runs/RunOptions.h"
#include "tools/runs/Scenario.h"
#include "tools/runs/StreamReport.h"

namespace tarn_host
{

// Pictures of one output during one phase.
struct PhasePictures
{
    std::size_t phase = 0;
    DWORD outputId = 0;
    ContactSheetSection frames;
    ContactSheetSection confidenceMaps; // without frames when the output has none
};

// Between camera and transform: takes frames on the capture thread, samples and pin states on the event loop thread.
// Run is confined; it needs a PlatformSession around it.
class StreamRun final : private SessionListener, private tarn_sim::IFrameSink
{
  public:
    // All outlive the run.
    StreamRun(const Scenario &playedScenario, const RunOptions &runOptions, ProgressLine &progressLine);
    ~StreamRun() override;

    // Plays every phase, or those until Ctrl-C, stops, and lets go of everything. Throws UsageError for types that are
    // not offered and for unusable frames, HostError when a step fails. Lost frames are told in the report.
    StreamReport Run(const LoadedModule &module);
    // Call after Run.
    std::vector<PhasePictures> Pictures() const;

  private:
    HRESULT OnInputState(DWORD inputId, DeviceStreamState state, IMFMediaType *type) override;
    void OnOutputSample(DWORD outputId, IMFSample *sample) override;
    void OnSessionFailure() override;
    void OnFrame(DWORD streamId, IMFSample *sample) override;

    void CreateCamera();
    void Enter(std::size_t index);
    void SwitchModes(const Phase &phase);
    void Play(std::size_t index);
    bool AllFramesIn(const Phase &phase) const;
    void StopOutputs();
    void LetGo(StreamReport &report);
    void CollectSample(DWORD outputId, IMFSample &sample);

    ComPtr<IMFMediaType> ChooseType(const OutputChoice &choice) const;
    // The input that feeds an output: the one in the same place, or the only one.
    DWORD InputOf(DWORD outputId) const;
    // The confidence map accompanies depth, and only when no infrared runs.
    bool ConfidenceMapComes() const;
    // Of the phase, 0 to 1.
    double ShareDone(const Phase &phase, ProgressLine::Clock::duration elapsed) const;
    std::string ProgressText(const Phase &phase) const;
    std::string PinText() const;
    void ThrowOnFailure() const;
    void Fail(const std::string &reason);

    const Scenario &scenario;
    const RunOptions &options;
    ProgressLine &progress;
    std::uint64_t frameLimit = 0; // after which the camera falls silent; 0: it goes on
    std::string sourceText;
    bool stalled = false;     // No frame came for too long while there should have been some.
    bool interrupted = false; // Ctrl-C came before the end.
    bool confidenceMapIsOn = false;
    std::optional<FrameWriter> writer;
    ComPtr<tarn_sim::SimulatedCamera> camera;
    DeviceTransformSession session;
    PhaseBooks books;
    std::map<DWORD, ComPtr<IMFMediaType>> running; // by output
    std::vector<DWORD> pinIds;
    std::vector<std::string> pinTexts; // of each phase

    mutable std::mutex lock;
    std::condition_variable progressed;
    std::map<DWORD, std::string> pinFormats; // guarded by lock
    std::optional<std::string> failure;      // guarded by lock; the first one
};

} // namespace tarn_host
