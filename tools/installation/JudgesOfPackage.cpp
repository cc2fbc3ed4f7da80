#include "tools/installation/Judges.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "tools/installation/FactQueries.h"

namespace tarn_host::judges
{

namespace
{
using enum Verdict;

constexpr std::int64_t kOldestBuild = 16299;

Outcome OkIf(bool holds, Verdict otherwise, std::string found = {})
{
    return holds ? Outcome{} : Outcome{otherwise, std::move(found)};
}

// "0.1.0" and "0.1.0.0" are the same version.
std::array<unsigned, 4> VersionOf(std::string_view text)
{
    std::array<unsigned, 4> numbers{};
    const char *at = text.data();
    const char *const end = text.data() + text.size();
    for (unsigned &number : numbers)
    {
        const auto [rest, error] = std::from_chars(at, end, number);
        if (error != std::errc{} || rest == end || *rest != '.')
        {
            break;
        }
        at = rest + 1;
    }
    return numbers;
}
} // namespace

Outcome Elevated(const InstallFacts &facts)
{
    return OkIf(facts.system.isElevated.value_or(false), Unknown);
}

Outcome Architecture(const InstallFacts &facts)
{
    const std::string &found = facts.system.architecture;
    return OkIf(found == "AMD64", found.empty() ? Unknown : Wrong, found);
}

Outcome Build(const InstallFacts &facts)
{
    return !facts.system.build ? Outcome{Unknown, {}}
                               : OkIf(*facts.system.build >= kOldestBuild, Wrong, std::to_string(*facts.system.build));
}

Outcome Package(const InstallFacts &facts)
{
    return OkIf(!facts.packages.empty(), facts.loaded.empty() ? Wrong : Advice);
}

Outcome PackageOne(const InstallFacts &facts)
{
    std::string found;
    for (const PackageFacts &package : facts.packages)
    {
        found += (found.empty() ? "" : ", ") + package.published + " " + package.version;
    }
    return facts.packages.empty() ? Outcome{Skipped, {}} : OkIf(facts.packages.size() == 1, Advice, found);
}

Outcome PackageVersion(const InstallFacts &facts, std::string_view hostVersion)
{
    Worst worst;
    const bool holds = std::any_of(facts.packages.begin(), facts.packages.end(), [&](const PackageFacts &package) {
        return VersionOf(package.version) == VersionOf(hostVersion);
    });
    for (const PackageFacts &package : facts.packages)
    {
        worst.Add(holds ? Ok : Advice, package.version + ", this tool is " + std::string(hostVersion));
    }
    return worst.Result();
}

} // namespace tarn_host::judges
