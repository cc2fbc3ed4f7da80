#include "tools/installation/Judges.h"

#include <algorithm>
#include <chrono>

#include "tools/diagnosis/ClockText.h"
#include "tools/diagnosis/TextScanner.h"
#include "tools/installation/FactQueries.h"
#include "tools/names/ResultNames.h"

namespace tarn_host::judges
{

namespace
{
using enum Verdict;

constexpr std::int64_t kRecentUs = 7 * kUsPerDay;

// As in 2026-11-21T09:15:02Z; 0 when it is none.
std::int64_t TimeOf(std::string_view text)
{
    TextScanner scanner(text);
    std::int64_t dayUs = 0;
    std::int64_t timeUs = 0;
    return TakeDate(scanner, dayUs) && scanner.Take("T") && TakeTimeOfDay(scanner, timeUs) ? dayUs + timeUs : 0;
}

std::string NamedCode(const std::string &code)
{
    std::uint32_t number = 0;
    TextScanner scanner(code);
    return scanner.TakeNumber(number, 16) && scanner.AtEnd() ? ResultText(number) : code;
}
} // namespace

Outcome Services(const InstallFacts &facts)
{
    for (const char *const name : {"FrameServer", "FrameServerMonitor"})
    {
        const auto service = std::find_if(facts.services.begin(), facts.services.end(),
                                          [&](const ServiceFacts &one) { return SameText(one.name, name); });
        if (service == facts.services.end() || SameText(service->startMode, "Disabled"))
        {
            return {Wrong, std::string(name) + (service == facts.services.end() ? " is missing" : " is disabled")};
        }
    }
    return {};
}

Outcome Mode(const InstallFacts &facts)
{
    const bool holds = facts.system.frameServerMode.value_or(1) != 0 && facts.system.frameServerMode32.value_or(1) != 0;
    return holds ? Outcome{} : Outcome{Wrong, {}};
}

Outcome Consent(const InstallFacts &facts)
{
    const std::string consent = facts.system.cameraConsent.value_or("Allow");
    return SameText(consent, "Allow") ? Outcome{} : Outcome{Wrong, consent};
}

Outcome Loaded(const InstallFacts &facts)
{
    if (facts.loaded.empty())
    {
        return {Unknown, "by nobody"};
    }
    for (const ServiceFacts &service : facts.services)
    {
        if (SameText(service.name, "FrameServer") && service.processId != 0 &&
            std::any_of(facts.loaded.begin(), facts.loaded.end(),
                        [&](const LoadedFacts &one) { return one.processId == service.processId; }))
        {
            return {};
        }
    }
    return {Advice, "by " + facts.loaded.front().process};
}

Outcome LoadedFile(const InstallFacts &facts)
{
    const auto classes = NamedClasses(facts);
    Worst worst;
    for (const LoadedFacts &loaded : facts.loaded)
    {
        if (!classes.empty())
        {
            const bool holds = std::any_of(classes.begin(), classes.end(),
                                           [&](const ClassFacts *one) { return NamesFile(*one, loaded.path); });
            worst.Add(holds ? Ok : Wrong, loaded.path);
        }
    }
    return worst.Result();
}

Outcome Crashes(const InstallFacts &facts)
{
    if (facts.crashes.empty())
    {
        return {};
    }
    const auto last =
        std::max_element(facts.crashes.begin(), facts.crashes.end(),
                         [](const CrashFacts &a, const CrashFacts &b) { return TimeOf(a.time) < TimeOf(b.time); });
    const bool isRecent = TimeOf(facts.time) - TimeOf(last->time) < kRecentUs;
    return {isRecent ? Wrong : Advice, std::to_string(facts.crashes.size()) + " times, last " + last->time + ", " +
                                           NamedCode(last->code) + " at offset " + last->offset};
}

Outcome Trace(const InstallFacts &facts)
{
    return facts.system.traceVariable ? Outcome{Advice, *facts.system.traceVariable} : Outcome{};
}

} // namespace tarn_host::judges
