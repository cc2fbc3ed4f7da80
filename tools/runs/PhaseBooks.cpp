#include "tools/runs/PhaseBooks.h"

#include <algorithm>
#include <utility>

#include "tools/command/ExitCode.h"

namespace tarn_host
{

void PhaseBooks::BeginChange(bool restartsAll, std::span<const DWORD> stopped)
{
    const std::scoped_lock hold(lock);
    isChanging = true;
    for (auto &[id, output] : running)
    {
        if (restartsAll || std::find(stopped.begin(), stopped.end(), id) != stopped.end())
        {
            output.stretch->collector.CutOff();
            output.former = std::exchange(output.stretch, nullptr);
        }
    }
}

void PhaseBooks::Remove(DWORD outputId)
{
    const std::scoped_lock hold(lock);
    const auto output = running.find(outputId);
    if (output != running.end())
    {
        if (output->second.former != nullptr)
        {
            output->second.former->collector.FramesBetween(output->second.betweenCount);
        }
        running.erase(output);
    }
}

void PhaseBooks::Add(DWORD outputId, DWORD inputId, const FrameFormat &format)
{
    const std::scoped_lock hold(lock);
    RunningOutput &output = running[outputId];
    output.inputId = inputId;
    output.format = format;
    output.stretch = nullptr;
}

void PhaseBooks::Begin(DWORD outputId, std::size_t phase, bool confidenceMapIsOn)
{
    const std::scoped_lock hold(lock);
    BeginLocked(outputId, running.at(outputId), phase, confidenceMapIsOn);
}

void PhaseBooks::EndChange(std::size_t phase, bool confidenceMapIsOn)
{
    const std::scoped_lock hold(lock);
    isChanging = false;
    for (auto &[id, output] : running)
    {
        if (output.stretch == nullptr || output.stretch->phase != phase)
        {
            BeginLocked(id, output, phase, confidenceMapIsOn);
        }
    }
}

void PhaseBooks::BeginLocked(DWORD outputId, RunningOutput &output, std::size_t phase, bool confidenceMapIsOn)
{
    stretches.emplace_back(
        new Stretch{phase, confidenceMapIsOn, OutputCollector(outputId, output.format, framesToShow)});
    output.stretch = stretches.back().get();
    output.stretch->collector.FramesBetween(std::exchange(output.betweenCount, 0));
}

PhaseBooks::EnteredFrame PhaseBooks::FrameIn(DWORD inputId, IMFSample &sample)
{
    LONGLONG time = -1;
    sample.GetSampleTime(&time);
    EnteredFrame frame{inputId, time, {}};
    const std::scoped_lock hold(lock);
    for (auto &[id, output] : running)
    {
        if (output.inputId == inputId && output.stretch != nullptr)
        {
            output.stretch->collector.FrameIn(time);
            frame.outputs.push_back(id);
        }
        else if (output.inputId == inputId)
        {
            output.between.insert(time);
            ++output.betweenCount;
        }
    }
    ++(frame.outputs.empty() ? inputs[inputId].between : inputs[inputId].in);
    return frame;
}

bool PhaseBooks::FrameRefused(const EnteredFrame &frame)
{
    const std::scoped_lock hold(lock);
    for (const auto &stretch : stretches)
    {
        const DWORD id = stretch->collector.Id();
        const bool isEntered = std::ranges::find(frame.outputs, id) != frame.outputs.end();
        const auto output = running.find(id);
        if (isEntered && stretch->collector.FrameRefused(frame.time) && output != running.end())
        {
            output->second.between.insert(frame.time);
        }
    }
    if (!frame.outputs.empty())
    {
        --inputs[frame.inputId].in;
        ++inputs[frame.inputId].between;
    }
    return isChanging;
}

PhaseBooks::InputFrames PhaseBooks::FramesOf(DWORD inputId) const
{
    const std::scoped_lock hold(lock);
    const auto found = inputs.find(inputId);
    return found == inputs.end() ? InputFrames{} : found->second;
}

OutputCollector *PhaseBooks::CollectorOf(DWORD outputId, const SampleDetails &details)
{
    const std::scoped_lock hold(lock);
    const auto output = running.find(outputId);
    if (output != running.end() && output->second.between.erase(details.time100ns) != 0)
    {
        return nullptr;
    }
    // The stretch in which it went in; a frame that never did belongs to the latest and counts as unexpected there.
    OutputCollector *collector = nullptr;
    for (const auto &stretch : stretches)
    {
        if (stretch->collector.Id() == outputId && (collector == nullptr || !collector->Expects(details.time100ns)))
        {
            collector = &stretch->collector;
        }
    }
    if (collector == nullptr)
    {
        throw HostError("a frame came from output " + std::to_string(outputId) + ", which never ran");
    }
    return collector;
}

bool PhaseBooks::AllHaveFramesIn(std::uint64_t count) const
{
    const std::scoped_lock hold(lock);
    return std::all_of(running.begin(), running.end(),
                       [&](const auto &one) { return one.second.stretch->collector.FramesIn() >= count; });
}

std::size_t PhaseBooks::FramesInFlight() const
{
    const std::scoped_lock hold(lock);
    std::size_t frames = 0;
    for (const auto &stretch : stretches)
    {
        frames += stretch->collector.InFlight();
    }
    return frames;
}

std::uint64_t PhaseBooks::FramesOut() const
{
    const std::scoped_lock hold(lock);
    std::uint64_t frames = 0;
    for (const auto &stretch : stretches)
    {
        frames += stretch->collector.FramesOut();
    }
    return frames;
}

void PhaseBooks::ForEachRunning(const std::function<void(const Stretch &)> &visit) const
{
    const std::scoped_lock hold(lock);
    for (const auto &one : running)
    {
        if (one.second.stretch != nullptr)
        {
            visit(*one.second.stretch);
        }
    }
}

const std::vector<std::unique_ptr<PhaseBooks::Stretch>> &PhaseBooks::Stretches() const
{
    return stretches;
}

} // namespace tarn_host
