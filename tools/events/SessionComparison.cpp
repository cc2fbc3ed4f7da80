#include "tools/events/SessionComparison.h"

#include <algorithm>
#include <map>
#include <set>

#include "tools/events/RecordText.h"
#include "tools/names/Format.h"
#include "tools/names/PipelineNames.h"
#include "tools/recording/StateChanges.h"

namespace tarn_host
{

namespace
{

struct LaneEntry
{
    const Record *record = nullptr;
    std::optional<Value> sample; // of an output: the call that fetched it does not count
};
using Lanes = std::map<std::string, std::vector<LaneEntry>>;

constexpr std::uint64_t kD3dManager = 2; // MFT_MESSAGE_SET_D3D_MANAGER, whose parameter is an address

// FNV-1a of values, without what differs from process to process.
class Digest
{
  public:
    void Add(const void *data, std::size_t size)
    {
        const auto *const bytes = static_cast<const std::uint8_t *>(data);
        for (std::size_t i = 0; i < size; ++i)
        {
            hash = (hash ^ bytes[i]) * 0x100000001B3;
        }
    }
    void Add(const Record &record)
    {
        const bool isKsEvent =
            (record.header.type == TARN_RECORD_KS_CALL || record.header.type == TARN_RECORD_KS_RETURN) &&
            (record.header.subject & TARN_KS_KIND) == TARN_KS_EVENT;
        const bool hasAddress = record.Values().Unsigned(TARN_VALUE_MESSAGE) == kD3dManager;
        Add(&record.header.result, sizeof record.header.result);
        for (const Value &value : record.Values())
        {
            const bool isHandle = isKsEvent && value.Name() == TARN_VALUE_DATA;
            Add(value, isHandle || (hasAddress && value.Name() == TARN_VALUE_PARAMETER));
        }
    }
    std::uint64_t Result() const noexcept
    {
        return hash;
    }
    void Add(const Value &value, bool isOfProcess = false)
    {
        const std::uint16_t head[]{value.Name(), value.Kind()};
        Add(head, sizeof head);
        if (value.Kind() == TARN_KIND_LIST)
        {
            for (const Value &item : value.Items())
            {
                Add(item);
            }
            return;
        }
        if (!isOfProcess && value.Name() != TARN_VALUE_WORK_QUEUE && value.Name() != TARN_VALUE_ADDRESS)
        {
            Add(value.Payload().data(), value.Payload().size());
        }
    }

  private:
    std::uint64_t hash = 0xCBF29CE484222325;
};

std::string StreamsText(const RecordedSession &session, const Record &call)
{
    std::set<std::uint64_t> streams;
    const Record *const end = session.EndOf(call);
    for (const Record *const record : {&call, end})
    {
        if (record == nullptr)
        {
            continue;
        }
        for (const Value &value : record->Values())
        {
            const auto stream = value.Name() == TARN_VALUE_BUFFER   ? value.Items().Unsigned(TARN_VALUE_STREAM)
                                : value.Name() == TARN_VALUE_STREAM ? value.Unsigned()
                                                                    : std::nullopt;
            if (stream)
            {
                streams.insert(*stream);
            }
        }
    }
    std::string text;
    for (const std::uint64_t stream : streams)
    {
        text += " " + std::to_string(stream);
    }
    return text;
}

// Of a call that fetched an event: frames and changes of state raise theirs on threads of their own, and which came
// first is chance.
std::string EventRowText(const RecordedSession &session, const Record &call)
{
    const Record *const end = session.EndOf(call);
    const auto event = end != nullptr ? end->Values().Unsigned(TARN_VALUE_EVENT_TYPE) : std::nullopt;
    return event == tarn_recording::kHaveOutput ? " for a frame" : "";
}

// Empty for what is not compared by itself.
std::string LaneOf(const RecordedSession &session, const Record &record)
{
    static const Guid inputStream = GuidNamed("MF_EVENT_MFT_INPUT_STREAM_ID");
    const std::string transform = "T" + std::to_string(record.header.transform) + " ";
    switch (record.header.type)
    {
    case TARN_RECORD_CALL:
        return transform + CallText(record.header.subject) + StreamsText(session, record) +
               EventRowText(session, record);
    case TARN_RECORD_KS_CALL:
    case TARN_RECORD_DEVICE_EVENT:
        return transform + SubjectText(session, record);
    case TARN_RECORD_EVENT: {
        const auto stream = record.Values().Items(TARN_VALUE_ATTRIBUTES).Attribute(inputStream);
        const auto number = stream ? stream->Unsigned() : std::nullopt;
        // Announcements of two outputs come in any order.
        return transform + SubjectText(session, record) +
               (number ? " " + std::to_string(*number) : StreamsText(session, record));
    }
    case TARN_RECORD_TRANSFORM:
    case TARN_RECORD_CAMERA:
    case TARN_RECORD_PIXELS:
    case TARN_RECORD_OUTPUT_HASH:
        return transform + RecordTypeText(record.header.type) + " " + std::to_string(record.header.subject) +
               StreamsText(session, record);
    default:
        return "";
    }
}

// A frame of two outputs may be fetched with one call or two.
void AddOutputs(Lanes &lanes, const Record &end)
{
    for (const Value &value : end.Values())
    {
        const auto sample = value.Items().Find(TARN_VALUE_SAMPLE);
        if (sample && !sample->IsNull())
        {
            const auto stream = value.Items().Unsigned(TARN_VALUE_STREAM).value_or(0);
            lanes["T" + std::to_string(end.header.transform) + " output " + std::to_string(stream)].push_back(
                {&end, *sample});
        }
    }
}

// Of a call that fetches outputs, and finds some or none.
bool IsFetch(const RecordedSession &session, const Record &record)
{
    const Record *const end = session.EndOf(record);
    return record.Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_OUTPUT) && end != nullptr &&
           (!end->Failed() || IsOrdinaryFailure(session, *end));
}

Lanes LanesOf(const RecordedSession &session)
{
    Lanes lanes;
    for (const Record &record : session.Records())
    {
        if (IsFetch(session, record))
        {
            AddOutputs(lanes, *session.EndOf(record));
        }
        else if (const std::string lane = LaneOf(session, record); !lane.empty())
        {
            lanes[lane].push_back({&record, std::nullopt});
        }
    }
    // Changes exclude each other: the order in which they ended is that in which they happened.
    const auto placeOf = [&](const LaneEntry &entry) {
        const bool isChange = !entry.sample && tarn_recording::IsStateChange(*entry.record);
        const Record *const end = isChange ? session.EndOf(*entry.record) : nullptr;
        return (end != nullptr ? end : entry.record)->header.sequence;
    };
    for (auto &[name, lane] : lanes)
    {
        std::ranges::stable_sort(lane, {}, placeOf);
    }
    return lanes;
}

std::uint64_t DigestOf(const RecordedSession &session, const LaneEntry &entry)
{
    Digest digest;
    if (entry.sample)
    {
        digest.Add(*entry.sample);
        return digest.Result();
    }
    const Record &record = *entry.record;
    digest.Add(record);
    const Record *const end = session.EndOf(record);
    const std::uint8_t hasEnd = end != nullptr;
    digest.Add(&hasEnd, 1);
    if (end != nullptr)
    {
        digest.Add(*end);
    }
    return digest.Result();
}

std::string TextOf(const RecordedSession &session, const Record *record)
{
    if (record == nullptr)
    {
        return "nothing more";
    }
    const Record *const end = session.EndOf(*record);
    std::string text = RecordText(session, *record);
    if (end != nullptr)
    {
        const std::string gave = ValuesText(end->Values());
        text += " = " + EndText(*end) + (gave.empty() ? "" : "  " + gave);
    }
    return text;
}

std::string BytesText(Bytes bytes, std::size_t from)
{
    constexpr std::size_t shown = 16;
    std::string text;
    for (const std::uint8_t byte : bytes.subspan(from, std::min(shown, bytes.size() - from)))
    {
        text += Format("%02X", byte);
    }
    return text.empty() ? "nothing" : text;
}

// The path to the first value that differs, and what stands there. Empty when none does.
std::string DifferentValue(const ValueList &expected, const ValueList &got)
{
    auto one = expected.begin();
    auto two = got.begin();
    for (; one != expected.end() && two != got.end(); ++one, ++two)
    {
        const std::string name = ValueNameText(*one);
        if (one->Name() != two->Name() || one->Kind() != two->Kind())
        {
            return name + " and " + ValueNameText(*two);
        }
        const Bytes left = one->Payload();
        const Bytes right = two->Payload();
        if (one->Kind() == TARN_KIND_LIST)
        {
            const std::string inner = DifferentValue(one->Items(), two->Items());
            if (!inner.empty())
            {
                return name + "/" + inner;
            }
        }
        else if (!std::ranges::equal(left, right))
        {
            const auto at = static_cast<std::size_t>(std::ranges::mismatch(left, right).in1 - left.begin());
            return name + Format(" from byte %zu: ", at) + BytesText(left, at) + " and " + BytesText(right, at);
        }
    }
    return one != expected.end() ? ValueNameText(*one) + " and nothing"
           : two != got.end()    ? "nothing and " + ValueNameText(*two)
                                 : "";
}

std::string DifferentValue(const RecordedSession &expected, const Record &one, const RecordedSession &got,
                           const Record &two)
{
    std::string arguments = DifferentValue(one.Values(), two.Values());
    const Record *const oneEnd = expected.EndOf(one);
    const Record *const twoEnd = got.EndOf(two);
    if (!arguments.empty() || oneEnd == nullptr || twoEnd == nullptr)
    {
        return arguments;
    }
    return oneEnd->header.result != twoEnd->header.result ? "result"
                                                          : DifferentValue(oneEnd->Values(), twoEnd->Values());
}

} // namespace

ComparisonResult CompareSessions(const RecordedSession &expected, const RecordedSession &got)
{
    const std::set<std::uint64_t> undecided = tarn_recording::CallsBesideChanges(expected);
    const std::set<std::uint64_t> gotUndecided = tarn_recording::CallsBesideChanges(got);
    const auto isUndecided = [&](const LaneEntry &one, const LaneEntry &two) {
        return tarn_recording::AsksForState(*one.record) &&
               (undecided.contains(one.record->header.sequence) || gotUndecided.contains(two.record->header.sequence));
    };
    Lanes expectedLanes = LanesOf(expected);
    Lanes gotLanes = LanesOf(got);
    for (const auto &[name, lane] : gotLanes)
    {
        expectedLanes[name]; // what only the other one has is compared with nothing
    }
    ComparisonResult result;
    std::uint64_t firstAt = 0;
    for (const auto &[name, lane] : expectedLanes)
    {
        const auto &other = gotLanes[name];
        const std::size_t common = std::min(lane.size(), other.size());
        std::size_t at = 0;
        while (at < common &&
               (DigestOf(expected, lane[at]) == DigestOf(got, other[at]) || isUndecided(lane[at], other[at])))
        {
            ++at;
        }
        result.compared += at;
        if (at == lane.size() && at == other.size())
        {
            continue;
        }
        ++result.differences;
        const Record *const one = at < lane.size() ? lane[at].record : nullptr;
        const Record *const two = at < other.size() ? other[at].record : nullptr;
        // Where only the other session has something, its place there is the best guess.
        const std::uint64_t place = (at < lane.size() ? lane : other)[at].record->header.sequence;
        if (!result.first || place < firstAt)
        {
            firstAt = place;
            result.first = {name,
                            at + 1,
                            one,
                            two,
                            one != nullptr && two != nullptr ? DifferentValue(expected, *one, got, *two) : "",
                            TextOf(expected, one),
                            TextOf(got, two)};
        }
    }
    return result;
}

} // namespace tarn_host
