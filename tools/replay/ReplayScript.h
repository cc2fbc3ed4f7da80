// What a replay does, step by step: a session's calls in one order that a single thread can make.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include "tools/recording/RecordedSession.h"
#include "tools/replay/Deliveries.h"

namespace tarn_replay
{

using tarn_recording::RecordedSession;

struct RecordedCall
{
    const Record *entry = nullptr;
    const Record *exit = nullptr; // null when it never returned
    // In the recording another thread was changing the transform's state meanwhile: which of the two came first is not
    // told by their answers.
    bool isUndecided = false;
    bool isBesideShutdown = false; // likewise

    std::uint64_t Sequence() const noexcept
    {
        return entry->header.sequence;
    }
};

struct Step
{
    enum class Action : std::uint8_t
    {
        Create, // a transform, `record`
        Release,
        Call,
        BeginWait, // a call that waits for an event
        EndWait,
        RunFrame,   // the frame that `call` brought has been processed by now
        SignalEvent // the camera signals its event
    };
    Action action = Action::Call;
    const Record *record = nullptr;
    const RecordedCall *call = nullptr;
};

// The order of the calls is that of their entries, with these exceptions:
// - A change of state is made when its first effect shows: before the first event that it raised, the first control of
//   the camera that it set, or where it emptied an output. A flush comes where it emptied the last one, behind the
//   frames that were under way.
// - The face-login mode is set where it was decided.
// - The camera's event comes before a stop during which it was heard.
// - A frame that came during changes comes before them when it was never delivered, and behind the last one whose
//   effect showed before its delivery.
// - What a call fetched was announced before.
// - A call that waits for an event begins at its entry and is waited for at its end.
// Views into the session, which must outlive it. Immutable.
class ReplayScript
{
  public:
    explicit ReplayScript(const RecordedSession &session);
    ReplayScript(const ReplayScript &) = delete;
    ReplayScript &operator=(const ReplayScript &) = delete;

    const std::vector<Step> &Steps() const noexcept
    {
        return steps;
    }

  private:
    struct Position
    {
        std::uint64_t sequence = 0;
        int rank = 0; // among those of one sequence
        friend auto operator<=>(const Position &, const Position &) = default;
    };
    struct Placed
    {
        Position at;
        Step step;
    };

    struct Window
    {
        const RecordedCall *change = nullptr;
        std::uint64_t turn = 0;
        std::uint64_t control = 0; // the first control of the camera that it set
        std::uint64_t mode = 0;    // where it tied or freed the face-login mode
        bool endsFrames = false;   // it raised events: a chain ended or began
    };

    void CollectCalls(const RecordedSession &session);
    void MarkShutdown();
    void PlaceChanges();
    bool EndsListening(const RecordedCall &call, std::uint64_t after) const;
    Position PlaceOfSignal(const Record &deviceEvent) const;
    std::uint64_t BeginOf(const RecordedCall &change) const;
    std::optional<Window> WindowOf(const RecordedCall &change) const;
    Position PlaceOf(const RecordedCall &call) const;
    const Window *WindowBehind(const RecordedCall &setting) const;
    Position PlaceOfFrame(const RecordedCall &call) const;
    Position PlaceOfFetch(const RecordedCall &call, std::uint64_t announced) const;
    Position PlaceOfMode(const RecordedCall &call, std::uint64_t decided) const;
    void PlaceCall(const RecordedCall &call);
    void PlaceOthers();
    const RecordedCall *FrameOf(const Record &event) const;

    std::span<const Record> records;
    const std::set<std::uint64_t> besideChanges;
    const Deliveries deliveries;
    std::map<std::uint64_t, std::uint64_t> modes; // by call, where it decided about the face-login mode
    std::vector<RecordedCall> calls; // by sequence; of applications and the pipeline, not those inside of others
    std::vector<Window> windows;     // changes beside other calls
    std::vector<Placed> placed;
    std::vector<Step> steps;
};

inline constexpr std::int32_t kShutDown = -1072873851; // MF_E_SHUTDOWN

// GetEvent without the flag that has it return at once.
bool IsWaiting(const Record &entry);

} // namespace tarn_replay
