#include "tools/diagnosis/SessionBooks.h"

#include <algorithm>
#include <array>

#include "tools/diagnosis/ClockText.h"
#include "tools/diagnosis/ResultsInText.h"
#include "tools/diagnosis/Symptoms.h"

namespace tarn_host
{

namespace
{

constexpr std::size_t kMostKinds = 500; // of anything that is counted by text
constexpr std::size_t kMostOutputs = 32;
constexpr std::size_t kMostChanges = 60;
constexpr std::size_t kLinesBeforeError = 5;
constexpr std::size_t kLinesAfterError = 4;
constexpr std::int64_t kAtOnceUs = 200'000;

bool Contains(std::string_view text, std::string_view part) noexcept
{
    return text.find(part) != std::string_view::npos;
}

void Count(Counts &counts, const std::string &what, std::int64_t timeUs, std::uint64_t more = 1)
{
    if (counts.size() < kMostKinds || counts.contains(what))
    {
        counts[what].Add(timeUs, more);
    }
}

// What happens with every frame or at every load, and explains nothing.
bool IsNoise(const LogRecord &record) noexcept
{
    static constexpr auto kNoise = std::to_array<std::string_view>(
        {"TraceQueued", "ProcessOutput", "AvailableType", "KsControlHandler::", "CreateIntrinsics",
         "FindDeviceSpecificNode", "InitFrameSourceTypes", "DumpBytes", "OneShotKsEventHandler"});
    return record.kind != LogRecord::Kind::Message || record.level > LogRecord::kInfoLevel ||
           std::any_of(kNoise.begin(), kNoise.end(),
                       [&](std::string_view part) { return Contains(record.source, part); });
}

// Numbers of frames and bytes differ from one line to the next: the text up to them is what is counted.
std::string KindOfError(const LogRecord &record)
{
    const std::size_t counted = record.text.find(" since the start: ");
    return WithResultNames(record.source + ": " + record.text.substr(0, counted));
}

std::string Line(const LogRecord &record)
{
    return WithResultNames(record.source.empty() ? record.text : record.source + ": " + record.text);
}

// The text up to ": ", and what follows.
std::pair<std::string, std::string_view> SplitAtColon(std::string_view text)
{
    const std::size_t colon = text.find(": ");
    return colon == std::string_view::npos ? std::pair{std::string(), text}
                                           : std::pair{std::string(text.substr(0, colon)), text.substr(colon + 2)};
}

// "MFVideoFormat_D16 {...} 640x480 @ 30/1 fps" without the id.
std::string WithoutId(std::string_view text)
{
    std::string plain(text);
    const std::size_t open = plain.find(" {");
    const std::size_t close = plain.find('}', open == std::string::npos ? 0 : open);
    return open == 0 || open == std::string::npos || close == std::string::npos ? plain
                                                                                : plain.erase(open, close + 1 - open);
}

double RateIn(std::string_view type)
{
    std::string_view before;
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 1;
    TextScanner scanner(type);
    return scanner.TakeUntil("@ ", before) && scanner.TakeNumber(numerator) && scanner.Take("/") &&
                   scanner.TakeNumber(denominator) && denominator != 0
               ? static_cast<double>(numerator) / denominator
               : 0;
}

} // namespace

bool SessionBooks::IsFollowedBy(const LogRecord &record) const
{
    return facts.hasEnded && record.source != "trace";
}

void SessionBooks::Take(const LogRecord &record)
{
    facts.process = facts.records == 0 ? record.process : facts.process;
    facts.firstUs = facts.records == 0 ? record.timeUs : std::min(facts.firstUs, record.timeUs);
    facts.lastUs = std::max(facts.lastUs, record.timeUs);
    ++facts.records;
    if (const Symptom *const symptom = FindSymptom(record))
    {
        Count(facts.symptoms, std::string(symptom->title), record.timeUs);
    }
    if (record.kind == LogRecord::Kind::Message)
    {
        TakeOutputMessage(record);
        TakeChange(record);
        TakeDrop(record);
        TakeKsResult(record);
        TakeError(record);
        facts.hasEnded = facts.hasEnded || record.text == "Tracing ends";
    }
    else if (record.source == "Module")
    {
        facts.module.insert(record.fields.begin(), record.fields.end());
    }
    else
    {
        TakeFrame(record);
        TakeKsResult(record);
    }
}

OutputFacts *SessionBooks::Output(const std::string &name)
{
    const bool isOutput =
        Contains(name, "Output Stream") && (facts.outputs.size() < kMostOutputs || facts.outputs.contains(name));
    return isOutput ? &facts.outputs[name] : nullptr;
}

void SessionBooks::StartOutput(OutputFacts &output, std::int64_t timeUs) const
{
    EndRun(output, timeUs);
    output.isActive = true;
    ++output.starts;
    output.startedUs = timeUs;
    output.framesSinceStart = 0;
}

void SessionBooks::EndRun(OutputFacts &output, std::int64_t timeUs) const
{
    if (!output.isActive)
    {
        return;
    }
    output.isActive = false;
    const std::int64_t since = output.framesSinceStart == 0 ? output.startedUs : output.lastFrameUs;
    if (timeUs - since > output.longestSilenceUs)
    {
        output.longestSilenceUs = timeUs - since;
        output.framesBeforeSilence = output.framesSinceStart;
        output.silentSinceUs = since;
    }
}

void SessionBooks::TakeFrame(const LogRecord &record)
{
    facts.hasFrameEvents = facts.hasFrameEvents || record.source == "mft_core::DeviceMft::ProcessInput";
    if (record.kind == LogRecord::Kind::Start && record.source == "mft_core::DeviceMft::ProcessInput" &&
        std::any_of(facts.outputs.begin(), facts.outputs.end(), [](const auto &one) { return one.second.isActive; }))
    {
        ++facts.inputs;
        facts.lastInputUs = record.timeUs;
    }
    OutputFacts *const output =
        record.source == "Sample delivered" ? Output(std::string(record.Field("Stream"))) : nullptr;
    if (output == nullptr)
    {
        return;
    }
    if (output->starts == 0 && output->frames == 0) // it ran when the log began
    {
        output->isActive = true;
        output->startedUs = record.timeUs;
    }
    else if (output->framesSinceStart == 0)
    {
        output->firstFrameAfterUs = output->firstFrameAfterUs.value_or(record.timeUs - output->startedUs);
    }
    else
    {
        const std::int64_t gap = record.timeUs - output->lastFrameUs;
        output->betweenFramesUs += gap;
        output->longestGapUs = std::max(output->longestGapUs, gap);
        ++output->intervals;
    }
    ++output->framesSinceStart;
    ++output->frames;
    output->lastFrameUs = record.timeUs;
}

void SessionBooks::TakeOutputMessage(const LogRecord &record)
{
    const auto [name, said] = SplitAtColon(record.text);
    OutputFacts *const output = Output(name);
    TextScanner scanner(said);
    std::string_view former;
    if (output == nullptr)
    {
        return;
    }
    if (scanner.Take("current media type "))
    {
        output->type = WithoutId(scanner.Rest());
        output->nominalFps = RateIn(scanner.Rest());
    }
    else if (scanner.Take("measured "))
    {
        output->measured =
            output->frames == 0 && Contains(scanner.Rest(), " 0.0 fps, ") ? std::string() : scanner.Rest();
    }
    else if (scanner.Take("asked to go ") && scanner.TakeUntil(" -> ", former))
    {
        scanner.Rest() == "Active" ? StartOutput(*output, record.timeUs) : EndRun(*output, record.timeUs);
        refusedSinceStart = 0;
    }
}

void SessionBooks::TakeChange(const LogRecord &record)
{
    if (Contains(record.source, "FramePrivacy") && Contains(record.text, ": privacy "))
    {
        const bool isOn = Contains(record.text, ": privacy on");
        facts.privateUs += facts.isPrivate && !isOn ? record.timeUs - facts.privateSinceUs : 0;
        facts.privateSinceUs = isOn && !facts.isPrivate ? record.timeUs : facts.privateSinceUs;
        facts.isPrivate = isOn;
    }
    static constexpr auto kChanges = std::to_array<std::string_view>(
        {": asked to go ", ": privacy ", " is in force", " stays in force", "confidence map: ", ": mode ",
         ": preferred state ", ": first sample", ": work queue ", "Tracing ends", "module started"});
    if (record.level <= LogRecord::kInfoLevel &&
        std::any_of(kChanges.begin(), kChanges.end(),
                    [&](std::string_view part) { return Contains(record.text, part); }))
    {
        if (facts.changes.size() < kMostChanges)
        {
            facts.changes.push_back({record.timeUs, record.text});
        }
        else
        {
            ++facts.changesLeftOut;
        }
    }
}

void SessionBooks::TakeDrop(const LogRecord &record)
{
    std::string_view head;
    std::uint64_t number = 0;
    TextScanner scanner(record.text);
    if (scanner.TakeUntil("frames refused since the start: ", head))
    {
        std::uint64_t other = 0;
        std::uint64_t tooShort = 0;
        scanner.TakeNumber(other);
        scanner.TakeUntil("format, ", head);
        scanner.TakeNumber(tooShort);
        const std::uint64_t refused = other + tooShort < other ? other : other + tooShort;
        const std::uint64_t more = refused >= refusedSinceStart ? refused - refusedSinceStart : refused;
        refusedSinceStart = refused;
        facts.refused += more;
        Count(facts.drops, tooShort > other ? "too short for its format" : "of another format than asked",
              record.timeUs, more);
    }
    else if (scanner.TakeUntil(": sample dropped, ", head))
    {
        Count(facts.drops, std::string(head) + ": " + WithResultNames(std::string(scanner.Rest())), record.timeUs);
    }
    else if (Contains(record.text, "late sample dropped"))
    {
        Count(facts.drops, "came after its output had been stopped or restarted", record.timeUs);
    }
    else if (Contains(record.text, "private frame"))
    {
        Count(facts.drops, "private, in a format that cannot be blanked", record.timeUs);
    }
    else if (Contains(record.text, " samples flushed"))
    {
        TextScanner counted(SplitAtColon(record.text).second);
        counted.TakeNumber(number);
        Count(facts.drops, "waited to be fetched when its output was stopped", record.timeUs, number);
    }
}

void SessionBooks::TakeKsResult(const LogRecord &record)
{
    if (record.kind == LogRecord::Kind::Stop && Contains(record.source, "KsControlsDispatcher::Ks"))
    {
        const std::string_view property =
            record.Field("PropId").empty() ? record.Field("EventSet") : record.Field("PropId");
        const auto result = ResultOf(record.Field("hr"));
        if (result && *result != 0)
        {
            Count(facts.ksFailuresFromEvents, WithoutId(property) + ": " + ResultText(*result), record.timeUs);
        }
        return;
    }
    std::string_view preset;
    std::string_view control;
    TextScanner scanner(SplitAtColon(record.text).second);
    if (Contains(record.source, "TarnDepthPresets") && scanner.TakeUntil(" failed at ", preset) &&
        scanner.TakeUntil(", hr ", control))
    {
        const auto result = ResultOf(scanner.Rest());
        Count(facts.ksFailures,
              std::string(control) + " for preset " + std::string(preset) + ": " + ResultText(result.value_or(0)),
              record.timeUs);
        return;
    }
    const std::size_t hr = record.text.find(": hr ");
    if (record.kind == LogRecord::Kind::Message && hr != std::string::npos && Contains(record.text, ", bytes returned"))
    {
        const auto result = ResultOf(std::string_view(record.text).substr(hr + 5));
        Count(facts.ksFailures,
              WithoutId(record.text.substr(0, hr)) + ": " + (result ? ResultText(*result) : record.text.substr(hr + 2)),
              record.timeUs);
    }
}

void SessionBooks::TakeError(const LogRecord &record)
{
    if (record.IsError())
    {
        Count(facts.errors, KindOfError(record), record.timeUs);
        if (!facts.firstError)
        {
            facts.firstError = NotedLine{record.timeUs, Line(record)};
            facts.beforeFirstError.assign(lately.begin(), lately.end());
            threadOfError = record.thread;
        }
        else if (record.thread == threadOfError && facts.afterFirstError.size() < kLinesAfterError &&
                 record.timeUs - facts.firstError->timeUs < kAtOnceUs)
        {
            facts.afterFirstError.push_back({record.timeUs, Line(record)});
        }
    }
    else if (!facts.firstError && !IsNoise(record))
    {
        lately.push_back({record.timeUs, Line(record)});
        if (lately.size() > kLinesBeforeError)
        {
            lately.pop_front();
        }
    }
}

SessionFacts SessionBooks::Close()
{
    for (auto &[name, output] : facts.outputs)
    {
        EndRun(output, facts.lastUs);
    }
    facts.privateUs += facts.isPrivate ? facts.lastUs - facts.privateSinceUs : 0;
    return std::move(facts);
}

} // namespace tarn_host
