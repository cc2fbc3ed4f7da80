// Plays a recorded session on a module.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "tools/frameserver/LoadedModule.h"
#include "tools/replay/CallThread.h"
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
    struct Transform
    {
        ComPtr<RecordedCamera> camera;
        std::shared_ptr<ModuleCalls> calls;
        std::map<std::uint32_t, Waiting> waits;                   // by the recorded thread
        std::map<std::uint64_t, std::uint64_t> gates;             // behind each frame, by the number of its call
        std::map<std::uint64_t, std::uint64_t>::iterator nextRun; // the first that was not let through
    };

    void Do(const Step &step);
    void Create(const Record &record);
    void TellOfCamera(const std::string &difference);
    void Release(const Record &record);
    void MakeCall(const RecordedCall &call);
    bool AwaitCall(const RecordedCall &call);
    void AfterCall(const RecordedCall &call, const Answer &answer);
    void BeginWait(const RecordedCall &call);
    void EndWait(const RecordedCall &call);
    void RunFrame(const RecordedCall &frame);
    void RunFramesWithMap(Transform &transform, const Record &entry);
    bool RunNextFrame(Transform &transform);
    void SignalEvent(const Record &record);
    void ReleaseAll();
    Transform *Find(const Record &record);

    static void Run(CallThread &thread, const std::shared_ptr<ModuleCalls> &calls, const Record &entry,
                    const std::shared_ptr<Answer> &answer);

    const RecordedSession &session;
    const tarn_host::LoadedModule &module;
    ReplayComparison &comparison;
    const FramePixels pixels;
    std::set<std::pair<std::uint32_t, std::int64_t>> withMap; // transform and time of samples with a confidence map
    std::chrono::milliseconds eventLimit{};
    std::atomic<bool> isBehindEnd{false}; // what the module does now is not in the recording
    CallThread caller;
    std::map<std::uint32_t, Transform> transforms;
};

} // namespace tarn_replay
