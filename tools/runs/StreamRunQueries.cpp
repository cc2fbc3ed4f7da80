// What a run looks up: types and inputs of outputs, and how far it has come.
#include "tools/runs/StreamRun.h"

#include <algorithm>

#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"

namespace tarn_host
{

bool StreamRun::ConfidenceMapComes() const
{
    return confidenceMapIsOn && running.size() == 1 && running.begin()->first == kDepthOutput;
}

ComPtr<IMFMediaType> StreamRun::ChooseType(const OutputChoice &choice) const
{
    std::vector<std::string> offered; // Types that differ only in what the text does not tell are told once.
    for (const ComPtr<IMFMediaType> &type : session.OutputTypes(choice.outputId))
    {
        const FrameFormat format = FrameFormat::Of(*type.Get());
        if (!choice.size || format.size == *choice.size)
        {
            return type;
        }
        if (std::find(offered.begin(), offered.end(), format.ToText()) == offered.end())
        {
            offered.push_back(format.ToText());
        }
    }
    std::string list;
    for (const std::string &text : offered)
    {
        list += (list.empty() ? "" : ", ") + text;
    }
    throw UsageError(std::string("output ") + NameOfOutput(scenario.transform, choice.outputId) + " has no type " +
                     (choice.size ? choice.size->ToText() : "at all") + "; it offers " + list);
}

DWORD StreamRun::InputOf(DWORD outputId) const
{
    const std::vector<DWORD> &inputs = session.InputIds();
    const std::vector<DWORD> &outputs = session.OutputIds();
    if (inputs.size() == 1)
    {
        return inputs.front();
    }
    if (inputs.empty() || inputs.size() != outputs.size())
    {
        throw HostError("cannot tell which of " + std::to_string(inputs.size()) + " inputs feeds which output");
    }
    const auto place = std::find(outputs.begin(), outputs.end(), outputId) - outputs.begin();
    return inputs[static_cast<std::size_t>(place)];
}

bool StreamRun::AllFramesIn(const Phase &phase) const
{
    if (frameLimit == 0)
    {
        return books.AllHaveFramesIn(phase.frames);
    }
    return std::all_of(pinIds.begin(), pinIds.end(), [&](DWORD id) {
        const tarn_sim::PinStatistics pin = camera->Pins().Statistics(id);
        return pin.delivered + pin.dropped + pin.failed >= frameLimit;
    });
}

double StreamRun::ShareDone(const Phase &phase, ProgressLine::Clock::duration elapsed) const
{
    if (phase.seconds > 0)
    {
        return std::chrono::duration<double>(elapsed).count() / phase.seconds;
    }
    std::uint64_t frames = UINT64_MAX;
    if (frameLimit == 0)
    {
        books.ForEachRunning(
            [&](const PhaseBooks::Stretch &stretch) { frames = std::min(frames, stretch.collector.FramesIn()); });
        return static_cast<double>(frames) / static_cast<double>(std::max<std::uint64_t>(phase.frames, 1));
    }
    for (const DWORD id : pinIds)
    {
        const tarn_sim::PinStatistics pin = camera->Pins().Statistics(id);
        frames = std::min(frames, pin.delivered + pin.dropped + pin.failed);
    }
    return static_cast<double>(frames) / static_cast<double>(frameLimit);
}

std::string StreamRun::ProgressText(const Phase &phase) const
{
    std::string text = (scenario.phases.size() > 1 ? scenario.title + ", " : "") + phase.caption + ":";
    books.ForEachRunning([&](const PhaseBooks::Stretch &stretch) {
        const StreamSummary summary = stretch.collector.Summary();
        text += Format("   %s %llu in, %llu out, %.1f fps", NameOfOutput(scenario.transform, stretch.collector.Id()),
                       static_cast<unsigned long long>(summary.framesIn),
                       static_cast<unsigned long long>(summary.framesOut), summary.framesPerSecond);
    });
    return text;
}

std::string StreamRun::PinText() const
{
    const std::scoped_lock hold(lock);
    std::string text;
    for (const auto &pin : pinFormats)
    {
        text += (text.empty() ? "" : ", ") + pin.second;
    }
    return text;
}

} // namespace tarn_host
