#include "tools/replay/Deliveries.h"

#include <algorithm>

namespace tarn_replay
{

using tarn_recording::ValueList;

bool IsHaveOutput(const Record &record)
{
    return record.header.type == TARN_RECORD_EVENT && record.Values().Unsigned(TARN_VALUE_EVENT_TYPE) == kHaveOutput;
}

std::optional<std::int64_t> TimeOf(const Record &call)
{
    return call.Values().Items(TARN_VALUE_SAMPLE).Signed(TARN_VALUE_TIME);
}

Deliveries::Deliveries(const tarn_recording::RecordedSession &session)
{
    for (const Record &record : session.Records())
    {
        const auto values = record.Values();
        if (record.Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT))
        {
            if (const auto time = TimeOf(record))
            {
                frames.emplace_back(*time, &record);
            }
        }
        else if (IsHaveOutput(record))
        {
            Add(record, values, values);
        }
        else if (record.Is(TARN_RECORD_RETURN, TARN_CALL_PROCESS_OUTPUT))
        {
            for (const auto &value : values)
            {
                if (value.Name() == TARN_VALUE_BUFFER)
                {
                    Add(record, value.Items(), value.Items().Items(TARN_VALUE_SAMPLE));
                }
            }
        }
    }
    std::ranges::stable_sort(frames, {}, &std::pair<std::int64_t, const Record *>::first);
    std::ranges::sort(deliveries);
}

void Deliveries::Add(const Record &record, ValueList values, ValueList sample)
{
    const auto time = sample.Signed(TARN_VALUE_TIME);
    const auto stream = values.Unsigned(TARN_VALUE_STREAM);
    if (time && stream)
    {
        deliveries.push_back({record.header.transform, *time, static_cast<std::uint32_t>(*stream),
                              record.header.sequence, record.header.type == TARN_RECORD_EVENT});
    }
}

const Deliveries::Delivery *Deliveries::Find(std::uint32_t transform, std::int64_t time,
                                             std::optional<std::uint64_t> output, std::uint64_t after) const
{
    const Delivery *first = nullptr;
    for (auto at = std::ranges::lower_bound(deliveries, Delivery{transform, time, 0, 0, false});
         at != deliveries.end() && at->transform == transform && at->time == time; ++at)
    {
        const bool isMeant = (!output || at->output == *output) && at->sequence > after;
        first = isMeant && (first == nullptr || at->sequence < first->sequence) ? &*at : first;
    }
    return first;
}

std::span<const Deliveries::Delivery> Deliveries::Of(std::uint32_t transform, std::int64_t time, std::uint32_t output,
                                                     std::uint64_t before) const
{
    const auto first = std::ranges::lower_bound(deliveries, Delivery{transform, time, output, 0, false});
    const auto last = std::ranges::lower_bound(deliveries, Delivery{transform, time, output, before, false});
    return {first, last};
}

std::uint64_t Deliveries::LastAnnouncementOf(const Record &fetch) const
{
    std::uint64_t last = 0;
    for (const auto &value : fetch.Values())
    {
        const auto time = value.Items().Items(TARN_VALUE_SAMPLE).Signed(TARN_VALUE_TIME);
        const auto output = value.Items().Unsigned(TARN_VALUE_STREAM);
        if (value.Name() != TARN_VALUE_BUFFER || !time || !output)
        {
            continue;
        }
        const auto same = Of(fetch.header.transform, *time, static_cast<std::uint32_t>(*output), fetch.header.sequence);
        auto before = std::ranges::count(same, false, &Delivery::isAnnouncement);
        for (const Delivery &one : same)
        {
            if (one.isAnnouncement && before-- >= 0)
            {
                last = std::max(last, one.sequence);
            }
        }
    }
    return last;
}

const Record *Deliveries::FrameOf(const Record &announcement) const
{
    const auto time = announcement.Values().Signed(TARN_VALUE_TIME);
    const auto output = announcement.Values().Unsigned(TARN_VALUE_STREAM);
    if (!time || !output)
    {
        return nullptr;
    }
    const std::uint32_t transform = announcement.header.transform;
    auto before =
        std::ranges::count(Of(transform, *time, static_cast<std::uint32_t>(*output), announcement.header.sequence),
                           true, &Delivery::isAnnouncement);
    const Record *found = nullptr;
    const auto sameTime = std::ranges::lower_bound(frames, *time, {}, &std::pair<std::int64_t, const Record *>::first);
    for (auto at = sameTime; at != frames.end() && at->first == *time && before >= 0; ++at)
    {
        if (at->second->header.transform == transform && at->second->header.sequence < announcement.header.sequence)
        {
            found = at->second;
            --before;
        }
    }
    return found;
}

bool Deliveries::Lacks(const Record &announcement, std::optional<std::uint64_t> output) const
{
    const auto time = announcement.Values().Signed(TARN_VALUE_TIME);
    return time && Find(announcement.header.transform, *time, output, 0) == nullptr;
}

} // namespace tarn_replay
