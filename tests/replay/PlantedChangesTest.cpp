// What a replay finds: a recording of another behaviour stands for a module or camera that has changed.
#include <regex>

#include "base/Crc32.h"
#include "tests/replay/RecordedRun.h"
#include "tools/runs/DemoScenarios.h"
#include "tools/runs/StreamRun.h"

using tarn_recording::Record;
using tarn_recording::RecordedSession;
using tarn_recording::Value;

namespace tarn_test
{

namespace
{

// A recording whose records can be changed.
class EditedRecording
{
  public:
    explicit EditedRecording(std::vector<std::uint8_t> recording)
        : bytes(std::move(recording)), session(RecordedSession::FromBytes({bytes}))
    {
    }

    // The first of that kind for which the test holds; fails the test when there is none.
    const Record &Find(
        std::uint16_t type, std::uint16_t subject,
        const std::function<bool(const Record &)> &test = [](const Record &) { return true; }) const
    {
        for (const Record &record : session.Records())
        {
            if (record.Is(type, subject) && test(record))
            {
                return record;
            }
        }
        ADD_FAILURE() << "no record of type " << type << " and subject " << subject;
        return session.Records().front();
    }
    tarn_record_header &Head(const Record &record)
    {
        return *reinterpret_cast<tarn_record_header *>(bytes.data() + record.offset);
    }
    // Changes one byte of the first value of that name, in the lists of the record too.
    void Flip(const Record &record, std::uint16_t name, std::size_t at = 0)
    {
        const auto found = FindIn(record.Values(), name);
        ASSERT_TRUE(found && found->Payload().size() > at) << "no value " << name;
        const auto place = static_cast<std::size_t>(found->Payload().data() - record.body.data());
        bytes[record.offset + sizeof(tarn_record_header) + place + at] ^= 1U;
    }
    RecordedSession Result()
    {
        for (const Record &record : session.Records())
        {
            tarn_record_header &head = Head(record);
            head.checksum =
                user_space_frameworks::Crc32(std::span(bytes).subspan(record.offset + 8, record.header.length - 8));
        }
        return RecordedSession::FromBytes({bytes});
    }

  private:
    static std::optional<Value> FindIn(tarn_recording::ValueList values, std::uint16_t name)
    {
        for (const Value &value : values)
        {
            const auto inside = value.Name() == name ? std::optional(value) : FindIn(value.Items(), name);
            if (inside)
            {
                return inside;
            }
        }
        return std::nullopt;
    }

    std::vector<std::uint8_t> bytes;
    const RecordedSession session;
};

struct PlantedChange
{
    const char *name;
    std::function<void(EditedRecording &)> plant;
    const char *found; // a pattern in what the replay tells
};

constexpr std::uint16_t kToCamera = TARN_KS_PROPERTY | TARN_KS_TO_CAMERA;

bool IsSet(const Record &call)
{
    const auto request = call.Values().Find(TARN_VALUE_REQUEST);
    return request && request->Payload().size() >= 24 && (request->Payload()[20] & KSPROPERTY_TYPE_SET) != 0;
}
bool HasSample(const Record &output)
{
    return output.Values().Items(TARN_VALUE_BUFFER).Items(TARN_VALUE_SAMPLE).Signed(TARN_VALUE_DURATION).has_value();
}
bool IsHaveOutput(const Record &event)
{
    return event.Values().Unsigned(TARN_VALUE_EVENT_TYPE) == std::uint64_t{METransformHaveOutput};
}

const PlantedChange kChanges[] = {
    {"another result code",
     [](auto &edited) {
         edited.Head(edited.Find(TARN_RECORD_RETURN, TARN_CALL_SET_OUTPUT_STREAM_STATE)).result = E_FAIL;
     },
     "result"},
    {"a lost event",
     [](auto &edited) { // whose frame never came
         edited
             .Head(edited.Find(TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT,
                               [](const Record &call) {
                                   return call.Values().Items(TARN_VALUE_SAMPLE).Unsigned(TARN_VALUE_NUMBER) == 3U;
                               }))
             .type = 999;
     },
     "event did not come|sample of output"},
    {"another event",
     [](auto &edited) {
         edited.Flip(edited.Find(TARN_RECORD_RETURN, TARN_CALL_GET_EVENT, IsHaveOutput), TARN_VALUE_EVENT_TYPE);
     },
     "event"},
    {"a swapped plane", [](auto &edited) { edited.Flip(edited.Find(TARN_RECORD_OUTPUT_HASH, 0), TARN_VALUE_HASH); },
     "picture of output"},
    {"a wrong preset",
     [](auto &edited) { edited.Flip(edited.Find(TARN_RECORD_KS_CALL, kToCamera, IsSet), TARN_VALUE_DATA); },
     "other data"},
    {"a control that is not asked for",
     [](auto &edited) { edited.Flip(edited.Find(TARN_RECORD_KS_CALL, kToCamera), TARN_VALUE_REQUEST, 16); },
     "never asked"},
    {"another answer to an application",
     [](auto &edited) { edited.Head(edited.Find(TARN_RECORD_KS_RETURN, TARN_KS_PROPERTY)).result = E_ABORT; },
     "result"},
    {"another media type",
     [](auto &edited) {
         edited.Flip(edited.Find(TARN_RECORD_RETURN, TARN_CALL_GET_OUTPUT_AVAILABLE_TYPE), TARN_VALUE_MEDIA_TYPE, 32);
     },
     "media type"},
    {"another duration",
     [](auto &edited) {
         edited.Flip(edited.Find(TARN_RECORD_RETURN, TARN_CALL_PROCESS_OUTPUT, HasSample), TARN_VALUE_DURATION);
     },
     "duration"},
    {"a stream more",
     [](auto &edited) { edited.Flip(edited.Find(TARN_RECORD_RETURN, TARN_CALL_GET_STREAM_COUNT), TARN_VALUE_COUNT); },
     "count"},
    {"a camera without one of its types",
     [](auto &edited) { edited.Head(edited.Find(TARN_RECORD_CAMERA, TARN_CAMERA_MEDIA_TYPE)).subject = 99; },
     "media type"},
};

} // namespace

TEST(PlantedChangesTest, EachIsFoundAndNamed)
{
    auto scenario = tarn_host::DemoScenarios().at(4).scenario; // depth, with the confidence map switched
    for (tarn_host::Phase &phase : scenario.phases)
    {
        phase.frames = 3;
    }
    const auto recording = RecordRun(true, [&](const tarn_host::LoadedModule &module) {
        tarn_host::RunOptions options;
        options.pace = tarn_host::Pace::Fast;
        tarn_host::ProgressLine progress(true, scenario.phases.size());
        tarn_host::StreamRun(scenario, options, progress).Run(module);
    });
    for (const PlantedChange &change : kChanges)
    {
        SCOPED_TRACE(change.name);
        EditedRecording edited(recording);
        change.plant(edited);
        const auto session = edited.Result();
        tarn_replay::ReplayComparison comparison(session);
        RecordRun(false, [&](const tarn_host::LoadedModule &module) { Replay(session, module, comparison); });
        EXPECT_NE(std::string::npos, comparison.ToText().find(std::string("what      "))) << comparison.ToText();
        const std::string what = comparison.First().value_or(tarn_replay::ReplayDifference{}).what;
        EXPECT_TRUE(std::regex_search(what, std::regex(change.found))) << comparison.ToText();
    }
}

} // namespace tarn_test
