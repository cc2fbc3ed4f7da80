// The order in which a replay makes calls that overlapped.
#include <string>

#include <gtest/gtest.h>

#include "tests/recording/RecordingBuilder.h"
#include "tools/replay/ReplayScript.h"

using tarn_recording::RecordedSession;
using tarn_replay::Step;

namespace tarn_tests
{

namespace
{

constexpr std::uint32_t kHaveOutput = 602; // METransformHaveOutput
constexpr std::uint32_t kStateChanged = 605;
constexpr std::uint32_t kRun = 2; // DeviceStreamState

class Overlaps : public RecordingBuilder
{
  public:
    Overlaps() { Add(TARN_RECORD_TRANSFORM, 1); }
    std::uint64_t Enter(std::uint16_t call, const ValueBytes &arguments = {})
    {
        return Add(TARN_RECORD_CALL, call, arguments);
    }
    void Leave(std::uint16_t call, std::uint64_t entry) { Add(TARN_RECORD_RETURN, call, {}, entry); }
    std::uint64_t EnterState(std::uint32_t state)
    {
        return Enter(TARN_CALL_SET_OUTPUT_STREAM_STATE,
                     ValueBytes().U32(TARN_VALUE_STREAM, 0).U32(TARN_VALUE_STATE, state));
    }
    void GiveFrame(std::int64_t time)
    {
        const auto sample = ValueBytes().I64(TARN_VALUE_TIME, time);
        ++thread; // the camera's
        Call(TARN_CALL_PROCESS_INPUT, ValueBytes().List(TARN_VALUE_SAMPLE, sample));
        --thread;
    }
    void Announce(std::uint32_t output, std::int64_t time)
    {
        Add(TARN_RECORD_EVENT, 0,
            ValueBytes()
                .U32(TARN_VALUE_EVENT_TYPE, kHaveOutput)
                .U32(TARN_VALUE_STREAM, output)
                .I64(TARN_VALUE_TIME, time));
    }
    void Empty(std::uint64_t change, std::uint32_t output)
    {
        Add(TARN_RECORD_CHANGE, TARN_CHANGE_OUTPUT_EMPTIED, ValueBytes().U32(TARN_VALUE_STREAM, output), change);
    }
    void Show(std::uint64_t change)
    {
        Add(TARN_RECORD_CHANGE, 0, {}, change);
        Add(TARN_RECORD_EVENT, 0, ValueBytes().U32(TARN_VALUE_EVENT_TYPE, kStateChanged), change);
    }
};

struct Order
{
    const char *name;
    void (*record)(Overlaps &session);
    const char *expected; // steps by what they do and the number of their record
};

constexpr Order kOrders[] = {
    {"a frame that a change lost comes before it",
     [](Overlaps &session) {
         const auto run = session.EnterState(kRun); // 2
         session.Show(run);
         session.GiveFrame(10); // 5
         session.Leave(TARN_CALL_SET_OUTPUT_STREAM_STATE, run);
     },
     "create 1, call 5, call 2"},
    {"of two frames of one time the one beside a change was lost",
     [](Overlaps &session) {
         const auto run = session.EnterState(kRun); // 2
         session.Show(run);
         session.GiveFrame(10); // 5
         session.Leave(TARN_CALL_SET_OUTPUT_STREAM_STATE, run);
         session.GiveFrame(10);   // 8
         session.Announce(0, 10); // 10
         session.Announce(1, 10);
     },
     "create 1, call 5, call 2, call 8, frame 10, frame 11"},
    {"a frame that the new state brought comes behind it",
     [](Overlaps &session) {
         const auto run = session.EnterState(kRun); // 2
         session.GiveFrame(10);                     // 3
         session.Show(run);
         session.Leave(TARN_CALL_SET_OUTPUT_STREAM_STATE, run);
         session.Announce(0, 10); // 8
     },
     "create 1, call 2, call 3, frame 8"},
    {"a stop comes where its output was emptied",
     [](Overlaps &session) {
         const auto stop = session.EnterState(0); // 2
         session.Add(TARN_RECORD_CHANGE, TARN_CHANGE_BEGINS, {}, stop);
         session.GiveFrame(10);   // 4
         session.Announce(0, 10); // 6
         session.Empty(stop, 0);
         session.Announce(1, 10); // 8
         session.Leave(TARN_CALL_SET_OUTPUT_STREAM_STATE, stop);
     },
     "create 1, call 4, frame 6, call 2, frame 8"},
    {"a fetch comes behind what it got, and before what took the rest",
     [](Overlaps &session) {
         const auto flush = session.Enter(TARN_CALL_PROCESS_MESSAGE, ValueBytes().U32(TARN_VALUE_MESSAGE, 0)); // 2
         session.GiveFrame(10);                                                                                // 3
         const auto fetch = session.Enter(TARN_CALL_PROCESS_OUTPUT);                                           // 5
         session.Announce(0, 10);                                                                              // 6
         session.Empty(flush, 0);
         session.Add(
             TARN_RECORD_RETURN, TARN_CALL_PROCESS_OUTPUT,
             ValueBytes().List(
                 TARN_VALUE_BUFFER,
                 ValueBytes().U32(TARN_VALUE_STREAM, 0).List(TARN_VALUE_SAMPLE, ValueBytes().I64(TARN_VALUE_TIME, 10))),
             fetch);
         session.Leave(TARN_CALL_PROCESS_MESSAGE, flush);
     },
     "create 1, call 3, frame 6, call 5, call 2"},
    {"the face-login mode is tied with the start",
     [](Overlaps &session) {
         const auto start = session.EnterState(kRun); // 2
         session.Add(TARN_RECORD_CHANGE, TARN_CHANGE_BEGINS, {}, start);
         session.Add(TARN_RECORD_CHANGE, TARN_CHANGE_FACE_LOGIN, {}, start);
         ValueBytes request;
         const std::uint8_t property[24]{};
         request.Put(TARN_VALUE_REQUEST, TARN_KIND_BYTES, property, sizeof property);
         const auto set = session.Add(TARN_RECORD_KS_CALL, TARN_KS_PROPERTY, request); // 5
         session.Add(TARN_RECORD_CHANGE, TARN_CHANGE_FACE_LOGIN, {}, set);
         session.Add(TARN_RECORD_KS_RETURN, TARN_KS_PROPERTY, {}, set);
         session.Show(start);
         session.Leave(TARN_CALL_SET_OUTPUT_STREAM_STATE, start);
     },
     "create 1, call 2, call 5"},
    {"a flush comes behind the frame that was under way",
     [](Overlaps &session) {
         session.GiveFrame(10); // 2
         const auto flush = session.Enter(TARN_CALL_PROCESS_MESSAGE, ValueBytes().U32(TARN_VALUE_MESSAGE, 0));
         session.Call(TARN_CALL_GET_STREAM_COUNT); // 5
         session.Announce(0, 10);                  // 7
         session.Empty(flush, 0);
         session.Leave(TARN_CALL_PROCESS_MESSAGE, flush);
     },
     "create 1, call 2, call 5, frame 7, call 4"},
    {"a wait ends where it ended",
     [](Overlaps &session) {
         const auto wait = session.Enter(TARN_CALL_GET_EVENT, ValueBytes().U32(TARN_VALUE_FLAGS, 0)); // 2
         session.GiveFrame(10);                                                                       // 3
         session.Leave(TARN_CALL_GET_EVENT, wait);
     },
     "create 1, begin 2, call 3, end 2"},
    {"the camera's event comes before the stop that heard it",
     [](Overlaps &session) {
         const auto stop = session.EnterState(0);  // 2
         session.Add(TARN_RECORD_DEVICE_EVENT, 0); // 3
         ValueBytes request;
         request.Put(TARN_VALUE_REQUEST, TARN_KIND_NULL, nullptr, 0);
         session.Add(TARN_RECORD_KS_CALL, TARN_KS_EVENT | TARN_KS_TO_CAMERA, request);
         session.Leave(TARN_CALL_SET_OUTPUT_STREAM_STATE, stop);
     },
     "create 1, signal 3, call 2"},
};

std::string ToText(const std::vector<Step> &steps)
{
    constexpr const char *kNames[] = {"create", "release", "call", "begin", "end", "frame", "signal"};
    std::string text;
    for (const Step &step : steps)
    {
        text += (text.empty() ? "" : ", ") + std::string(kNames[static_cast<std::size_t>(step.action)]) + " " +
                std::to_string(step.record->header.sequence);
    }
    return text;
}

} // namespace

TEST(ReplayScriptTest, OverlappingCallsComeInTheOrderThatTheRecordingShows)
{
    for (const Order &order : kOrders)
    {
        SCOPED_TRACE(order.name);
        Overlaps overlaps;
        order.record(overlaps);
        const auto session = RecordedSession::FromBytes({overlaps.File()});
        EXPECT_EQ(order.expected, ToText(tarn_replay::ReplayScript(session).Steps()));
    }
}

} // namespace tarn_tests
