#include "tools/diagnosis/Findings.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "tools/diagnosis/ClockText.h"

namespace tarn_host
{

namespace
{
using enum Severity;

constexpr std::int64_t kSilenceUs = kUsPerSecond;
constexpr std::uint64_t kRefusedAtAChange = 3; // frames of the former format that may be on their way
constexpr std::int64_t kSameTimeUs = 200'000;
constexpr std::uint64_t kIntervalsForARate = 30;
constexpr double kLeastShareOfRate = 0.85;

bool Contains(std::string_view text, std::string_view part) noexcept
{
    return text.find(part) != std::string_view::npos;
}

// What an application may ask for without harm.
bool IsNotThere(std::string_view text) noexcept
{
    return Contains(text, "ERROR_SET_NOT_FOUND") || Contains(text, "ERROR_NOT_FOUND") || Contains(text, "E_NOTIMPL");
}

std::string RateText(double fps)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", fps);
    return text.data();
}

void AddSymptoms(const SessionFacts &facts, std::vector<Finding> &findings)
{
    for (const Symptom &symptom : KnownSymptoms())
    {
        const auto seen = facts.symptoms.find(std::string(symptom.title));
        const bool isTold = std::any_of(findings.begin(), findings.end(),
                                        [&](const Finding &one) { return one.title == symptom.title; });
        if (seen != facts.symptoms.end() && !isTold) // several signs may share a title
        {
            findings.push_back(
                {symptom.severity, seen->second.firstUs, seen->second.count, seen->first, std::string(symptom.cure)});
        }
    }
}

// Calls below the module's own properties carry the name of an object only: they show that the camera refused.
bool IsNamed(std::string_view control) noexcept
{
    return Contains(control, " property ") || Contains(control, " event ") || Contains(control, " for preset ");
}

void AddControls(const SessionFacts &facts, std::vector<Finding> &findings)
{
    const Counts &failures = facts.ksFailures.empty() ? facts.ksFailuresFromEvents : facts.ksFailures;
    const auto isNamed = [](const auto &one) { return IsNamed(one.first); };
    const bool hasNamed = std::any_of(failures.begin(), failures.end(), isNamed);
    const bool isOfCamera = !std::all_of(failures.begin(), failures.end(), isNamed);
    for (const auto &[control, counted] : failures)
    {
        if (IsNotThere(control))
        {
            findings.push_back({Advice, counted.firstUs, counted.count, "a control is not there: " + control,
                                "an application asks for what this camera does not have"});
        }
        else if (!hasNamed || IsNamed(control))
        {
            findings.push_back({Wrong, counted.firstUs, counted.count,
                                (isOfCamera ? "the camera refuses a control: " : "a call is refused: ") + control,
                                "docs/ks-reference.md: what may be asked, and the results"});
        }
    }
}

void AddPrivacy(const SessionFacts &facts, std::vector<Finding> &findings)
{
    if (facts.privateSinceUs == 0)
    {
        return;
    }
    const bool isMostly = facts.isPrivate || facts.privateUs * 2 > facts.lastUs - facts.firstUs;
    findings.push_back({isMostly ? Wrong : Advice, facts.privateSinceUs, 1,
                        std::string("privacy ") + (facts.isPrivate ? "is" : "was") + " on for " +
                            DurationText(facts.privateUs) + ": frames go out blank",
                        "the camera's privacy switch or key"});
}

void AddFormat(const SessionFacts &facts, std::vector<Finding> &findings)
{
    for (const auto &[reason, counted] : facts.drops)
    {
        if (Contains(reason, "format than asked") || Contains(reason, "too short for"))
        {
            const bool isEmpty = std::any_of(facts.outputs.begin(), facts.outputs.end(), [](const auto &one) {
                return one.second.starts != 0 && one.second.frames == 0;
            });
            const bool isChange = facts.refused <= kRefusedAtAChange && !isEmpty;
            findings.push_back(
                {isChange ? Advice : Wrong, counted.firstUs, 1,
                 "frames have the wrong format: " + std::to_string(counted.count) + " refused, " + reason,
                 isChange ? "usual at a change of format"
                          : "the pin delivers something else than its media type says: driver, firmware"});
        }
    }
}

// Why an output gave nothing for so long.
std::pair<std::string, std::string> SilenceOf(const SessionFacts &facts, const OutputFacts &output)
{
    const std::string after = std::to_string(output.framesBeforeSilence) + " frames";
    if (facts.inputs == 0)
    {
        return {"no frame comes from the camera", "cable, port, another program that has the camera; then the driver"};
    }
    if (facts.lastInputUs > output.silentSinceUs + kSilenceUs)
    {
        return {"frames come in and none goes out" + (output.framesBeforeSilence == 0 ? "" : " after " + after),
                "the drops below have the reason"};
    }
    return {"no more frames come from the camera after " + after,
            "a few frames only: its buffers do not come back, see sample ownership in docs/first-run-on-windows.md; "
            "else cable or driver"};
}

void AddStarvation(const SessionFacts &facts, std::vector<Finding> &findings)
{
    if (!facts.hasFrameEvents)
    {
        return;
    }
    for (const auto &[name, output] : facts.outputs)
    {
        if (output.longestSilenceUs > kSilenceUs && (facts.refused == 0 || output.framesBeforeSilence != 0))
        {
            const auto [what, cure] = SilenceOf(facts, output);
            findings.push_back({Wrong, output.silentSinceUs, 1,
                                std::string("frames are missing: ")
                                    .append(what)
                                    .append(", for ")
                                    .append(DurationText(output.longestSilenceUs))
                                    .append(" (" + name + ")"),
                                cure});
        }
        else if (output.intervals >= kIntervalsForARate && output.Fps() < output.nominalFps * kLeastShareOfRate)
        {
            findings.push_back({Wrong, output.startedUs, 1,
                                std::string("frames are missing: ")
                                    .append(RateText(output.Fps()))
                                    .append(" of ")
                                    .append(RateText(output.nominalFps))
                                    .append(" a second, longest gap ")
                                    .append(DurationText(output.longestGapUs))
                                    .append(" (" + name + ")"),
                                "drops below; in low light a camera may slow down by itself"});
        }
    }
}

// The first error that nothing above explains: what is found at the same time has told it already.
void AddRest(const SessionFacts &facts, std::vector<Finding> &findings)
{
    const auto explains = [](const Finding &one, std::int64_t timeUs) {
        return one.severity == Wrong || std::abs(one.timeUs - timeUs) < kSameTimeUs;
    };
    const std::pair<const std::string, Counted> *first = nullptr;
    for (const auto &error : facts.errors)
    {
        const std::int64_t timeUs = error.second.firstUs;
        const bool isExplained =
            std::any_of(findings.begin(), findings.end(), [&](const Finding &one) { return explains(one, timeUs); });
        if (!isExplained && !IsNotThere(error.first) && (first == nullptr || timeUs < first->second.firstUs))
        {
            first = &error;
        }
    }
    if (first != nullptr)
    {
        findings.push_back({Wrong, first->second.firstUs, first->second.count, "a step failed: " + first->first,
                            "what led to it is below"});
    }
}

} // namespace

std::vector<Finding> FindingsOf(const SessionFacts &facts)
{
    std::vector<Finding> findings;
    AddSymptoms(facts, findings);
    AddControls(facts, findings);
    AddPrivacy(facts, findings);
    AddFormat(facts, findings);
    AddStarvation(facts, findings);
    AddRest(facts, findings);
    std::stable_sort(findings.begin(), findings.end(), [](const Finding &a, const Finding &b) {
        return a.severity != b.severity ? a.severity > b.severity : a.timeUs < b.timeUs;
    });
    return findings;
}

} // namespace tarn_host
