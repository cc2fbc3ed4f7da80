#include "tools/events/FrameBooks.h"

#include <algorithm>
#include <cmath>

namespace tarn_host
{

namespace
{
constexpr std::uint32_t kRun = 2;     // DeviceStreamState_Run
constexpr std::size_t kFewFrames = 8; // that may be on their way when an output stops

std::uint32_t StreamOf(const Record &call)
{
    return static_cast<std::uint32_t>(call.Values().Unsigned(TARN_VALUE_STREAM).value_or(0));
}

std::optional<std::int64_t> TimeOf(const Record &processInput)
{
    return SampleView::Of(processInput.Values().Items(TARN_VALUE_SAMPLE)).time;
}
} // namespace

double OutputBooks::FramesPerSecond() const noexcept
{
    return runningTicks == 0 ? 0 : static_cast<double>(intervals) * 1e7 / static_cast<double>(runningTicks);
}

std::uint64_t Percentile(std::vector<std::uint64_t> values, double share)
{
    const auto rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(values.size())));
    const auto nth = values.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(rank, 1) - 1);
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

void FrameBooks::Take(const Record &record)
{
    if (record.header.transform == 0)
    {
        return;
    }
    lastClock = std::max(lastClock, record.header.clock);
    Transform &transform = transforms[record.header.transform];
    if (record.Is(TARN_RECORD_CALL, TARN_CALL_SET_OUTPUT_STREAM_STATE))
    {
        transform.isChanging = true;
        TakeStateChange(transform, record);
    }
    else if (record.Is(TARN_RECORD_RETURN, TARN_CALL_SET_OUTPUT_STREAM_STATE))
    {
        transform.isChanging = false;
        TakeStop(transform, record);
    }
    else if (record.Is(TARN_RECORD_CALL, TARN_CALL_SHUTDOWN))
    {
        transform.isChanging = true;
    }
    else if (record.Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT))
    {
        TakeInput(transform, record);
    }
    else if (record.Is(TARN_RECORD_RETURN, TARN_CALL_PROCESS_INPUT) && record.Failed())
    {
        TakeRefusal(transform, record);
    }
    else if (record.Is(TARN_RECORD_RETURN, TARN_CALL_PROCESS_OUTPUT))
    {
        TakeOutput(transform, record);
    }
    else if (record.header.type == TARN_RECORD_EVENT)
    {
        TakeAnnouncement(transform, record);
    }
}

// Every output of the transform begins anew: they may share what processes their frames. An output runs before the call
// that starts it returns, and until the call that stops it has.
void FrameBooks::TakeStateChange(Transform &transform, const Record &call)
{
    const Record *const end = session.EndOf(call);
    const ValueList arguments = call.Values();
    if (arguments.Unsigned(TARN_VALUE_STATE) == kRun && (end == nullptr || !end->Failed()))
    {
        const std::uint32_t stream = StreamOf(call);
        if (const TypeView type = TypeView::Of(arguments.Items(TARN_VALUE_MEDIA_TYPE)); type.width != 0)
        {
            SetType(transform, stream, type, call.header.clock);
        }
        Output &output = transform.outputs[stream];
        output.books.transform = call.header.transform;
        output.books.stream = stream;
        output.runsSince = output.isRunning ? output.runsSince : call.header.clock;
        output.isRunning = true;
        ++output.books.starts;
    }
    for (auto &[stream, output] : transform.outputs)
    {
        if (output.isRunning)
        {
            output.intervals.emplace_back();
        }
    }
}

void FrameBooks::TakeStop(Transform &transform, const Record &end)
{
    const Record *const call = session.Find(end.header.entry);
    if (call == nullptr || end.Failed() || call->Values().Unsigned(TARN_VALUE_STATE) == kRun)
    {
        return;
    }
    const auto output = transform.outputs.find(StreamOf(*call));
    if (output != transform.outputs.end() && output->second.isRunning)
    {
        output->second.isRunning = false;
        output->second.books.openTicks += Between(output->second.runsSince, end.header.clock);
    }
}

// Each type has its own books.
void FrameBooks::SetType(Transform &transform, std::uint32_t stream, const TypeView &type, std::uint64_t clock)
{
    Output &output = transform.outputs[stream];
    const std::string before = output.books.type.ToText();
    if (output.books.type.width != 0 && before != type.ToText())
    {
        Output former = std::exchange(output, Output{});
        former.books.openTicks += former.isRunning ? Between(former.runsSince, clock) : 0;
        former.isRunning = false;
        transform.resting[{stream, before}] = std::move(former);
        if (const auto rested = transform.resting.find({stream, type.ToText()}); rested != transform.resting.end())
        {
            output = std::move(rested->second);
            transform.resting.erase(rested);
        }
    }
    output.books.type = type;
}

void FrameBooks::TakeInput(Transform &transform, const Record &call)
{
    const auto time = TimeOf(call);
    if (!time)
    {
        return;
    }
    transform.inputs[*time] = {call.header.clock, call.header.sequence};
    for (auto &[stream, output] : transform.outputs)
    {
        if (!output.isRunning)
        {
            continue;
        }
        Interval &interval = output.intervals.back();
        // What comes while the outputs change counts as refused.
        interval.frames.push_back({.inputStream = StreamOf(call), .isRefused = transform.isChanging});
        output.byTime[*time] = {output.intervals.size() - 1, interval.frames.size() - 1};
    }
}

FrameBooks::Frame *FrameBooks::FindFrame(Output &output, std::int64_t time)
{
    const auto place = output.byTime.find(time);
    return place == output.byTime.end() ? nullptr
                                        : &output.intervals[place->second.interval].frames[place->second.frame];
}

void FrameBooks::TakeRefusal(Transform &transform, const Record &end)
{
    const Record *const call = session.Find(end.header.entry);
    const auto time = call != nullptr ? TimeOf(*call) : std::nullopt;
    for (auto &[stream, output] : transform.outputs)
    {
        if (Frame *const frame = time ? FindFrame(output, *time) : nullptr)
        {
            frame->isRefused = true;
        }
    }
}

void FrameBooks::TakeAnnouncement(Transform &transform, const Record &event)
{
    const ValueList values = event.Values();
    const auto time = values.Signed(TARN_VALUE_TIME);
    const auto stream = values.Unsigned(TARN_VALUE_STREAM);
    if (values.Unsigned(TARN_VALUE_EVENT_TYPE) != tarn_recording::kHaveOutput || !time || !stream)
    {
        return;
    }
    Output &output = transform.outputs[static_cast<std::uint32_t>(*stream)];
    output.announced[*time] = event.header.clock;
    if (Frame *const frame = FindFrame(output, *time))
    {
        frame->isAnnounced = true;
    }
}

void FrameBooks::TakeOutput(Transform &transform, const Record &end)
{
    for (const OutputView &view : OutputsOf(end))
    {
        TakeSample(transform, end, view);
    }
}

void FrameBooks::TakeSample(Transform &transform, const Record &end, const OutputView &view)
{
    Output &output = transform.outputs[view.stream];
    OutputBooks &books = output.books;
    books.transform = end.header.transform;
    books.stream = view.stream;
    ++books.framesOut;
    books.blanked += view.sample.isBlanked ? 1 : 0;
    if (!output.intervals.empty())
    {
        Interval &interval = output.intervals.back();
        if (interval.lastOutAt != 0)
        {
            const std::uint64_t gap = Between(interval.lastOutAt, end.header.clock);
            books.runningTicks += gap;
            ++books.intervals;
            if (gap > books.longestGapTicks)
            {
                books.longestGapTicks = gap;
                books.longestGapAt = interval.lastOutAt;
            }
        }
        interval.lastOutAt = end.header.clock;
    }
    const auto input = view.sample.time ? transform.inputs.find(*view.sample.time) : transform.inputs.end();
    if (input == transform.inputs.end())
    {
        ++books.unexpected;
        return;
    }
    links.push_back({input->second.sequence, end.header.sequence});
    books.times.total.push_back(Between(input->second.clock, end.header.clock));
    if (const auto announced = output.announced.find(*view.sample.time); announced != output.announced.end())
    {
        books.times.toAnnounced.push_back(Between(input->second.clock, announced->second));
        books.times.toFetched.push_back(Between(announced->second, end.header.clock));
    }
    if (Frame *const frame = FindFrame(output, *view.sample.time))
    {
        frame->isOut = true;
        output.feeders.insert(frame->inputStream);
    }
}

OutputBooks FrameBooks::Finished(const Output &output) const
{
    OutputBooks books = output.books;
    books.openTicks += output.isRunning ? Between(output.runsSince, lastClock) : 0;
    for (const Interval &interval : output.intervals)
    {
        std::vector<Frame> frames;
        std::ranges::copy_if(interval.frames, std::back_inserter(frames), [&](const Frame &frame) {
            return output.feeders.empty() || output.feeders.contains(frame.inputStream);
        });
        books.framesIn += frames.size();
        std::size_t first = frames.size();
        std::size_t last = 0;
        for (std::size_t i = 0; i < frames.size(); ++i)
        {
            if (frames[i].isOut)
            {
                first = std::min(first, i);
                last = i;
            }
        }
        const bool nothingCame = first == frames.size();
        for (std::size_t i = 0; i < frames.size(); ++i)
        {
            const bool isBefore = frames[i].isRefused || (!nothingCame && i < first);
            const bool isAfter = nothingCame ? frames.size() <= kFewFrames : i > last;
            std::uint64_t &count = isBefore ? books.between : isAfter ? books.cutOff : books.lost;
            count += frames[i].isOut ? 0 : 1;
            books.notFetched += !frames[i].isOut && frames[i].isAnnounced && !isBefore ? 1 : 0;
        }
    }
    return books;
}

std::vector<OutputBooks> FrameBooks::Outputs() const
{
    std::vector<OutputBooks> all;
    for (const auto &[number, transform] : transforms)
    {
        for (const auto &[key, output] : transform.resting)
        {
            all.push_back(Finished(output));
        }
        for (const auto &[stream, output] : transform.outputs)
        {
            if (output.books.starts != 0 || output.books.framesOut != 0)
            {
                all.push_back(Finished(output));
            }
        }
    }
    std::ranges::stable_sort(all, {},
                             [](const OutputBooks &books) { return std::pair(books.transform, books.stream); });
    return all;
}

} // namespace tarn_host
