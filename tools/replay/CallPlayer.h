// Plays a recorded session on a module.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/frameserver/LoadedModule.h"
#include "tools/replay/CallThread.h"
#include "tools/replay/ConfidenceMaps.h"
#include "tools/replay/FramePixels.h"
#include "tools/replay/ModuleCalls.h"
#include "tools/replay/RecordedCamera.h"
#include "tools/replay/ReplayComparison.h"
#include "tools/replay/ReplayScript.h"

namespace tarn_replay
{

struct PlayOptions
{
    bool recordedSpeed = false;                 // otherwise as fast as it goes
    std::optional<std::uint64_t> until;         // the last record's number
    std::chrono::milliseconds eventLimit{5000}; // after which an event does not come any more
};

// Makes the calls one after the other, each on its own time limit, and has the module's frames processed where the
// recording shows them. Ends at the first difference. Confined.
class CallPlayer
{
  public:
    // All must outlive it; the platform must be started.
    CallPlayer(const RecordedSession &recordedSession, const tarn_host::LoadedModule &loadedModule,
               ReplayComparison &replayComparison);
    ~CallPlayer();
    CallPlayer(const CallPlayer &) = delete;
    CallPlayer &operator=(const CallPlayer &) = delete;

    // What the module or the platform cannot do is a difference, too.
    void Play(const PlayOptions &options);

  private:
    // What a call that is under way gives; the thread that makes it may outlive the player.
    struct Answer
    {
        ValueWriter given;
        HRESULT result = E_UNEXPECTED;
        std::string failure; // why it could not be made
    };
    struct Waiting
    {
        CallThread thread;
        std::shared_ptr<Answer> answer;
        bool isUnderWay = false;
        bool hasCome = false;
    };
    struct Frame
    {
        std::uint64_t call = 0; // number of its record
        std::uint64_t gate = 0; // behind it
    };
    struct Transform
    {
        ComPtr<RecordedCamera> camera;
        std::shared_ptr<ModuleCalls> calls;
        std::map<std::uint32_t, Waiting> waits; // by the recorded thread
        std::vector<Frame> frames;              // as they were put on the queue
        std::size_t nextRun = 0;                // the first that was not let through
    };

    void Do(const Step &step);
    void Create(const Record &record);
    void TellOfCamera(const std::string &difference);
    void Release(const Record &record);
    void MakeCall(const RecordedCall &call);
    bool AwaitCall(const RecordedCall &call);
    // Whether a wait for an event has ended since it was last asked.
    static bool HasNews(Transform &transform);
    void AfterCall(const RecordedCall &call, const Answer &answer);
    void BeginWait(const RecordedCall &call);
    void EndWait(const RecordedCall &call);
    void RunFrame(const RecordedCall &frame);
    void RunFramesWithMap(Transform &transform, const Record &entry);
    void RunNextFrame(Transform &transform);
    void SignalEvent(const Record &record);
    void ReleaseAll();
    Transform *Find(const Record &record);

    static void Run(CallThread &thread, const std::shared_ptr<ModuleCalls> &calls, const Record &entry,
                    const std::shared_ptr<Answer> &answer);

    const RecordedSession &session;
    const tarn_host::LoadedModule &module;
    ReplayComparison &comparison;
    const FramePixels pixels;
    const ConfidenceMaps maps;
    std::chrono::milliseconds eventLimit{};
    std::atomic<bool> isBehindEnd{false}; // what the module does now is not in the recording
    CallThread caller;
    std::map<std::uint32_t, Transform> transforms;
};

} // namespace tarn_replay
