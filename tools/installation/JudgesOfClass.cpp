#include "tools/installation/Judges.h"

#include <algorithm>
#include <array>

#include "tools/installation/FactQueries.h"

namespace tarn_host::judges
{

namespace
{
using enum Verdict;

constexpr std::int64_t kMachineX64 = 0x8664;

template <class Judge>
Outcome OfEachOwnClass(const InstallFacts &facts, Judge judge)
{
    Worst worst;
    for (const DeviceFacts *const device : PresentDevices(facts))
    {
        const std::string_view own = OwnClass(*FilterOf(*device));
        worst.Add(judge(HasClass(facts.classes, own), HasClass(device->classes, own)), std::string(own));
    }
    return worst.Result();
}

template <class Judge>
Outcome OfEachClass(const InstallFacts &facts, Judge judge)
{
    Worst worst;
    for (const ClassFacts *const one : NamedClasses(facts))
    {
        const Outcome outcome = judge(*one);
        worst.Add(outcome.verdict, one->clsid + (outcome.found.empty() ? "" : ": " + outcome.found));
    }
    return worst.Result();
}

template <class Judge>
Outcome OfEachFile(const InstallFacts &facts, Judge judge)
{
    Worst worst;
    for (const FileFacts *const file : JudgedFiles(facts))
    {
        if (file->exists)
        {
            const Outcome outcome = judge(*file);
            worst.Add(outcome.verdict, file->path + (outcome.found.empty() ? "" : ": " + outcome.found));
        }
    }
    return worst.Result();
}

// Read and execute, also where a rule says it in the generic way.
bool CoversReading(std::int64_t rights)
{
    constexpr std::int64_t kReadData = 0x1;
    constexpr std::int64_t kExecute = 0x20;
    constexpr std::int64_t kGenericAll = 0x10000000;
    constexpr std::int64_t kGenericExecute = 0x20000000;
    constexpr std::int64_t kGenericRead = 0x80000000;
    return (rights & (kReadData | kGenericRead | kGenericAll)) != 0 &&
           (rights & (kExecute | kGenericExecute | kGenericAll)) != 0;
}

bool ConcernsService(std::string_view sid)
{
    static constexpr std::array<std::string_view, 5> kGroups{"S-1-5-19", "S-1-5-6", "S-1-5-11", "S-1-1-0",
                                                             "S-1-5-32-545"};
    return std::find(kGroups.begin(), kGroups.end(), sid) != kGroups.end();
}
} // namespace

Outcome Class(const InstallFacts &facts)
{
    const auto generation = GenerationOf(facts);
    if (!generation)
    {
        return {Unknown, {}};
    }
    return OfEachOwnClass(facts, [&](bool inRoot, bool belowDevice) {
        switch (*generation)
        {
        case Generation::A:
            return inRoot ? Ok : Wrong;
        case Generation::B:
            return belowDevice ? Ok : Wrong;
        case Generation::C:
            break;
        }
        return inRoot || belowDevice || !facts.loaded.empty() ? Ok : Unknown;
    });
}

Outcome ClassForm(const InstallFacts &facts)
{
    return OfEachOwnClass(facts, [&](bool inRoot, bool belowDevice) {
        return GenerationOf(facts) == Generation::A && belowDevice && !inRoot ? Wrong : Ok;
    });
}

Outcome ClassLeft(const InstallFacts &facts)
{
    return OfEachOwnClass(facts, [&](bool inRoot, bool) {
        return GenerationOf(facts).value_or(Generation::A) != Generation::A && inRoot ? Advice : Ok;
    });
}

Outcome Class32(const InstallFacts &facts)
{
    return facts.classes32.empty() ? Outcome{} : Outcome{Advice, {}};
}

Outcome Server(const InstallFacts &facts)
{
    return OfEachClass(facts, [](const ClassFacts &one) {
        const std::string text = one.server && !one.server->texts.empty() ? one.server->texts.front() : "";
        const bool holds = one.server && (one.server->type == "String" || one.server->type == "ExpandString") &&
                           text.find('"') == std::string::npos && EndsWithText(text, "\\tarn_dmft.dll");
        return holds ? Outcome{} : Outcome{Wrong, text.empty() ? "no value" : text};
    });
}

Outcome Threading(const InstallFacts &facts)
{
    return OfEachClass(facts, [](const ClassFacts &one) {
        return SameText(one.threadingModel, "Both") ? Outcome{} : Outcome{Wrong, one.threadingModel};
    });
}

Outcome File(const InstallFacts &facts)
{
    return OfEachClass(facts, [&](const ClassFacts &one) {
        const auto file = std::find_if(facts.files.begin(), facts.files.end(),
                                       [&](const FileFacts &each) { return NamesFile(one, each.path); });
        if (file == facts.files.end())
        {
            return Outcome{Unknown, {}};
        }
        return file->exists ? Outcome{} : Outcome{Wrong, file->path};
    });
}

Outcome Store(const InstallFacts &facts)
{
    return OfEachFile(facts, [](const FileFacts &file) {
        return ContainsText(file.path, "\\DriverStore\\FileRepository\\") ? Outcome{} : Outcome{Advice, {}};
    });
}

Outcome Machine(const InstallFacts &facts)
{
    return OfEachFile(facts, [](const FileFacts &file) {
        return file.machine == kMachineX64 ? Outcome{} : Outcome{Wrong, {}};
    });
}

Outcome Signature(const InstallFacts &facts)
{
    return OfEachFile(facts, [](const FileFacts &file) {
        const Verdict otherwise = file.signature.empty() ? Unknown : file.signature == "HashMismatch" ? Wrong : Advice;
        return file.signature == "Valid" ? Outcome{} : Outcome{otherwise, file.signature};
    });
}

Outcome Web(const InstallFacts &facts)
{
    return OfEachFile(facts, [](const FileFacts &file) { return file.isFromWeb ? Outcome{Wrong, {}} : Outcome{}; });
}

Outcome Access(const InstallFacts &facts)
{
    return OfEachFile(facts, [](const FileFacts &file) {
        bool isAllowed = false;
        for (const FileFacts::Access &rule : file.access)
        {
            if (!ConcernsService(rule.sid) || !CoversReading(rule.rights))
            {
                continue;
            }
            if (!rule.isAllowed)
            {
                return Outcome{Wrong, "denied to " + rule.sid};
            }
            isAllowed = true;
        }
        return isAllowed ? Outcome{} : Outcome{Wrong, {}};
    });
}

} // namespace tarn_host::judges
