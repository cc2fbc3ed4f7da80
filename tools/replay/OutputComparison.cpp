#include "tools/replay/OutputComparison.h"

#include <algorithm>

#include "tools/names/ResultNames.h"

namespace tarn_replay
{

using tarn_recording::Value;
using tarn_recording::ValueList;

namespace
{
constexpr std::int32_t kNeedMoreInput = -1072861838; // MF_E_TRANSFORM_NEED_MORE_INPUT

std::string NameOf(std::uint32_t stream)
{
    return "sample of output " + std::to_string(stream);
}

std::string ResultOf(std::int32_t result)
{
    return tarn_host::ResultText(static_cast<std::uint32_t>(result));
}

bool IsUsual(std::int32_t result)
{
    return result == 0 || result == kNeedMoreInput;
}

std::string TimeText(std::optional<std::int64_t> time)
{
    return time ? "one of time " + std::to_string(*time) : "one";
}
} // namespace

std::int64_t OutputComparison::Sample::Time() const noexcept
{
    return ValueList(values).Signed(TARN_VALUE_TIME).value_or(0);
}

OutputComparison::OutputComparison(const RecordedSession &recordedSession) : session(recordedSession)
{
    const auto announce = [this](const Record &record, ValueList values, ValueList sample) {
        const auto time = sample.Signed(TARN_VALUE_TIME);
        const auto stream = values.Unsigned(TARN_VALUE_STREAM);
        if (time && stream)
        {
            announced.insert({{record.header.transform, static_cast<std::uint32_t>(*stream)}, *time});
        }
    };
    for (const Record &record : session.Records())
    {
        if (record.header.type == TARN_RECORD_EVENT)
        {
            announce(record, record.Values(), record.Values());
        }
        else if (record.Is(TARN_RECORD_RETURN, TARN_CALL_PROCESS_OUTPUT))
        {
            for (const Value &buffer : record.Values())
            {
                announce(record, buffer.Items(), buffer.Items().Items(TARN_VALUE_SAMPLE));
            }
        }
    }
    FindCutFrames();
}

// What was announced last before a change, and not for all outputs.
void OutputComparison::FindCutFrames()
{
    struct Last
    {
        std::int64_t time = 0;
        std::set<std::uint64_t> outputs; // that have it
        bool isKnown = false;
    };
    std::map<std::uint32_t, Last> lasts;
    for (const Record &record : session.Records())
    {
        Last &last = lasts[record.header.transform];
        const auto time = record.Values().Signed(TARN_VALUE_TIME);
        if (IsHaveOutput(record) && time)
        {
            if (!last.isKnown || last.time != *time)
            {
                last = {*time, {}, true};
            }
            last.outputs.insert(record.Values().Unsigned(TARN_VALUE_STREAM).value_or(0));
        }
        else if (last.isKnown && last.outputs.size() == 1 &&
                 (record.header.type == TARN_RECORD_EVENT || record.header.type == TARN_RECORD_CHANGE))
        {
            cut.emplace(record.header.transform, last.time);
        }
    }
}

bool OutputComparison::WasAnnounced(const Output &output, const Sample &sample) const
{
    return announced.contains({output, sample.Time()}) || cut.contains({output.transform, sample.Time()});
}

std::optional<ValueDifference> OutputComparison::Compare(const RecordedCall &call, std::int32_t result, ValueList given)
{
    const std::uint32_t transform = call.entry->header.transform;
    for (const Value &buffer : given)
    {
        const auto values = buffer.Items();
        const auto sample = values.Find(TARN_VALUE_SAMPLE);
        if (sample && sample->Kind() == TARN_KIND_LIST)
        {
            const auto stream = static_cast<std::uint32_t>(values.Unsigned(TARN_VALUE_STREAM).value_or(0));
            const auto bytes = sample->Payload();
            early[{transform, stream}].push_back({{bytes.begin(), bytes.end()}, values.Unsigned(TARN_VALUE_HASH)});
        }
    }
    for (const Value &buffer : call.exit->Values())
    {
        const auto values = buffer.Items();
        const auto sample = values.Find(TARN_VALUE_SAMPLE);
        if (sample && sample->Kind() == TARN_KIND_LIST)
        {
            const auto stream = static_cast<std::uint32_t>(values.Unsigned(TARN_VALUE_STREAM).value_or(0));
            if (auto difference = CompareNext(call, {transform, stream}, *sample))
            {
                return difference;
            }
        }
    }
    for (const auto &[output, samples] : early)
    {
        const auto further = std::ranges::find_if(
            samples, [&, key = output](const Sample &sample) { return !WasAnnounced(key, sample); });
        if (further != samples.end())
        {
            return ValueDifference{NameOf(output.stream), "none", TimeText(further->Time())};
        }
    }
    const std::int32_t recorded = call.exit->header.result;
    return result == recorded || (IsUsual(result) && IsUsual(recorded))
               ? std::nullopt
               : std::optional(ValueDifference{"result", ResultOf(recorded), ResultOf(result)});
}

std::optional<ValueDifference> OutputComparison::CompareNext(const RecordedCall &call, const Output &output,
                                                             const Value &recorded)
{
    const auto time = recorded.Items().Signed(TARN_VALUE_TIME);
    auto &samples = early[output];
    // Announced, and gone with a stop before it was fetched.
    while (!samples.empty() && time && samples.front().Time() < *time && WasAnnounced(output, samples.front()))
    {
        samples.pop_front();
    }
    if (samples.empty())
    {
        return ValueDifference{NameOf(output.stream), TimeText(time), "none"};
    }
    const Sample sample = std::move(samples.front());
    samples.pop_front();
    if (auto difference = FindDifference(recorded.Items(), ValueList(sample.values)))
    {
        difference->what = NameOf(output.stream) + ", " + difference->what;
        return difference;
    }
    const auto hash = HashOf(call, output.stream);
    if (hash && sample.hash)
    {
        ++pictures;
        if (*hash != *sample.hash)
        {
            return ValueDifference{"picture of output " + std::to_string(output.stream),
                                   "hash " + std::to_string(*hash), "hash " + std::to_string(*sample.hash)};
        }
    }
    return std::nullopt;
}

// It stands between the call and its return.
std::optional<std::uint64_t> OutputComparison::HashOf(const RecordedCall &call, std::uint32_t stream) const
{
    const auto &records = session.Records();
    for (auto at = records.begin() + (call.entry - records.data());
         at != records.end() && at->header.sequence < call.exit->header.sequence; ++at)
    {
        if (at->header.type == TARN_RECORD_OUTPUT_HASH && at->header.entry == call.Sequence() &&
            at->Values().Unsigned(TARN_VALUE_STREAM) == stream)
        {
            return at->Values().Unsigned(TARN_VALUE_HASH);
        }
    }
    return std::nullopt;
}

} // namespace tarn_replay
