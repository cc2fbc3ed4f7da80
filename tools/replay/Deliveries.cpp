#include "tools/replay/Deliveries.h"

#include <algorithm>

namespace tarn_replay
{

using tarn_recording::ValueList;

namespace
{
// Whether each announcement may be that of the frame at its place.
bool CameBefore(const std::vector<const Record *> &frames, const std::vector<std::uint64_t> &announced)
{
    for (std::size_t i = 0; i < announced.size() && i < frames.size(); ++i)
    {
        if (frames[i]->header.sequence > announced[i])
        {
            return false;
        }
    }
    return true;
}
} // namespace

bool IsHaveOutput(const Record &record)
{
    return record.header.type == TARN_RECORD_EVENT &&
           record.Values().Unsigned(TARN_VALUE_EVENT_TYPE) == tarn_recording::kHaveOutput;
}

std::optional<std::int64_t> TimeOf(const Record &call)
{
    return call.Values().Items(TARN_VALUE_SAMPLE).Signed(TARN_VALUE_TIME);
}

Deliveries::Deliveries(const tarn_recording::RecordedSession &session, const std::set<std::uint64_t> &besideChanges)
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
    FindLost(besideChanges);
}

// The module hands frames on in their order, so that all of one time come out unless a change took some.
void Deliveries::FindLost(const std::set<std::uint64_t> &besideChanges)
{
    for (auto first = frames.begin(); first != frames.end();)
    {
        const auto last = std::find_if(first, frames.end(), [&](const auto &one) { return one.first != first->first; });
        std::vector<const Record *> left;
        for (auto frame = first; frame != last; ++frame)
        {
            if (frame->second->header.transform == first->second->header.transform)
            {
                left.push_back(frame->second);
            }
        }
        const auto announced = left.size() > 1 ? MostAnnounced(*left.front(), first->first) : Sequences{};
        for (std::size_t i = 0; i < left.size() && !announced.empty() && left.size() > announced.size();)
        {
            auto others = left;
            others.erase(others.begin() + static_cast<std::ptrdiff_t>(i));
            const bool mayBeLost = besideChanges.contains(left[i]->header.sequence) && CameBefore(others, announced);
            if (mayBeLost)
            {
                lost.insert(left[i]);
                left = std::move(others);
            }
            else
            {
                ++i;
            }
        }
        first = last;
    }
}

// By the output that has the most of them.
Deliveries::Sequences Deliveries::MostAnnounced(const Record &frame, std::int64_t time) const
{
    Sequences most;
    const std::uint32_t transform = frame.header.transform;
    auto at = std::ranges::lower_bound(deliveries, Delivery{transform, time, 0, 0, false});
    while (at != deliveries.end() && at->transform == transform && at->time == time)
    {
        const auto same = Among(transform, time, at->output, UINT64_MAX);
        Sequences announced;
        for (const Delivery &one : same)
        {
            if (one.isAnnouncement)
            {
                announced.push_back(one.sequence);
            }
        }
        if (announced.size() > most.size())
        {
            most.swap(announced);
        }
        at += static_cast<std::ptrdiff_t>(same.size());
    }
    return most;
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

const Deliveries::Delivery *Deliveries::Of(const Record &call) const
{
    const auto time = lost.contains(&call) ? std::nullopt : TimeOf(call);
    if (!time)
    {
        return nullptr;
    }
    const std::uint32_t transform = call.header.transform;
    const Delivery *first = nullptr;
    for (auto at = std::ranges::lower_bound(deliveries, Delivery{transform, *time, 0, 0, false});
         at != deliveries.end() && at->transform == transform && at->time == *time; ++at)
    {
        const bool isBehind = at->sequence > call.header.sequence;
        first = isBehind && (first == nullptr || at->sequence < first->sequence) ? &*at : first;
    }
    return first;
}

std::span<const Deliveries::Delivery> Deliveries::Among(std::uint32_t transform, std::int64_t time,
                                                        std::uint32_t output, std::uint64_t before) const
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
        const auto same =
            Among(fetch.header.transform, *time, static_cast<std::uint32_t>(*output), fetch.header.sequence);
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
        std::ranges::count(Among(transform, *time, static_cast<std::uint32_t>(*output), announcement.header.sequence),
                           true, &Delivery::isAnnouncement);
    const Record *found = nullptr;
    const auto sameTime = std::ranges::lower_bound(frames, *time, {}, &std::pair<std::int64_t, const Record *>::first);
    for (auto at = sameTime; at != frames.end() && at->first == *time && before >= 0; ++at)
    {
        const auto &head = at->second->header;
        if (head.transform == transform && head.sequence < announcement.header.sequence && !lost.contains(at->second))
        {
            found = at->second;
            --before;
        }
    }
    return found;
}

} // namespace tarn_replay
