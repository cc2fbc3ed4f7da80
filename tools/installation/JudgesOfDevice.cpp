#include "tools/installation/Judges.h"

#include <algorithm>
#include <array>

#include "tools/installation/FactQueries.h"

namespace tarn_host::judges
{

namespace
{
using enum Verdict;

struct Category
{
    std::string_view id;
    const char *name;
};
constexpr std::array<Category, 4> kCategories{{{"{E5323777-F976-4F5B-9B55-B94699C46E44}", "video camera"},
                                               {"{65E8773D-8F56-11D0-A3B9-00A0C9223196}", "capture"},
                                               {"{6994AD05-93EF-11D0-A3CC-00A0C9223196}", "video"},
                                               {"{24E552D7-6523-47F7-A647-D3465BF1F5CA}", "sensor camera"}}};
constexpr std::size_t kCategoriesOfColor = 3;

const char *NameOf(const DeviceFacts &device)
{
    return FilterOf(device) == Filter::Depth ? "depth" : "color";
}

template <class Judge>
Outcome OfEachDevice(const InstallFacts &facts, Judge judge)
{
    Worst worst;
    for (const DeviceFacts *const device : PresentDevices(facts))
    {
        const Outcome one = judge(*device);
        worst.Add(one.verdict, std::string(NameOf(*device)) + (one.found.empty() ? "" : ": " + one.found));
    }
    return worst.Result();
}

template <class Judge>
Outcome OfEachInterface(const InstallFacts &facts, Judge judge)
{
    Worst worst;
    for (const DeviceFacts *const device : PresentDevices(facts))
    {
        for (const InterfaceFacts &one : device->interfaces)
        {
            if (one.isEnabled)
            {
                const Outcome outcome = judge(*device, one);
                worst.Add(outcome.verdict, std::string(NameOf(*device)) + ", " + one.category +
                                               (outcome.found.empty() ? "" : ": " + outcome.found));
            }
        }
    }
    return worst.Result();
}

// The transforms that an interface names: the chain wins.
std::vector<std::string> Transforms(const InterfaceFacts &one)
{
    return one.chain ? one.chain->texts : one.transform ? one.transform->texts : std::vector<std::string>();
}

bool IsDword1(const std::optional<RegistryValue> &value)
{
    return value && value->type == "DWord" && value->number == 1;
}

Outcome ValueOf(const InterfaceFacts &one)
{
    const auto isOf = [](const std::optional<RegistryValue> &value, std::string_view type) {
        return value && value->type == type && !value->texts.empty() && !value->texts.front().empty();
    };
    if (one.transform && one.chain)
    {
        return {Advice, "both values"};
    }
    if (!one.transform && !one.chain)
    {
        return {Wrong, "neither value"};
    }
    const bool holds = one.transform ? isOf(one.transform, "String") : isOf(one.chain, "MultiString");
    return holds ? Outcome{} : Outcome{Wrong, "type or content"};
}
} // namespace

Outcome Filters(const InstallFacts &facts)
{
    const auto present = PresentDevices(facts);
    std::string missing;
    for (const Filter filter : {Filter::Depth, Filter::Color})
    {
        if (std::none_of(present.begin(), present.end(),
                         [&](const DeviceFacts *device) { return FilterOf(*device) == filter; }))
        {
            missing += std::string(missing.empty() ? "" : ", ") + (filter == Filter::Depth ? "depth" : "color");
        }
    }
    return missing.empty() ? Outcome{} : Outcome{Wrong, missing};
}

Outcome Problem(const InstallFacts &facts)
{
    return OfEachDevice(facts, [](const DeviceFacts &device) {
        return device.problem == 0 ? Outcome{} : Outcome{Wrong, "code " + std::to_string(device.problem)};
    });
}

Outcome Driver(const InstallFacts &facts)
{
    return OfEachDevice(facts, [](const DeviceFacts &device) {
        return SameText(device.service, "usbvideo") ? Outcome{} : Outcome{Wrong, device.service};
    });
}

Outcome Extension(const InstallFacts &facts)
{
    if (facts.packages.empty())
    {
        return {Skipped, {}};
    }
    return OfEachDevice(facts, [&](const DeviceFacts &device) {
        const bool holds = std::any_of(facts.packages.begin(), facts.packages.end(), [&](const PackageFacts &package) {
            return SameText(device.inf, package.published) ||
                   std::any_of(device.extensions.begin(), device.extensions.end(), [&](const std::string &one) {
                       return SameText(one.substr(0, one.find(':')), package.published);
                   });
        });
        return holds ? Outcome{} : Outcome{Wrong, {}};
    });
}

Outcome Container(const InstallFacts &facts)
{
    const auto present = PresentDevices(facts);
    if (Filters(facts).verdict != Ok)
    {
        return {Skipped, {}};
    }
    const bool holds = std::all_of(present.begin(), present.end(), [&](const DeviceFacts *device) {
        return !device->containerId.empty() && SameText(device->containerId, present.front()->containerId);
    });
    return holds ? Outcome{} : Outcome{Wrong, {}};
}

Outcome Interfaces(const InstallFacts &facts)
{
    return OfEachDevice(facts, [](const DeviceFacts &device) {
        const std::size_t wanted = FilterOf(device) == Filter::Depth ? kCategories.size() : kCategoriesOfColor;
        std::string missing;
        for (std::size_t i = 0; i < wanted; ++i)
        {
            const bool holds =
                std::any_of(device.interfaces.begin(), device.interfaces.end(), [&](const InterfaceFacts &one) {
                    return one.isEnabled && SameText(one.reference, "GLOBAL") &&
                           SameText(one.category, kCategories[i].id);
                });
            missing += holds ? "" : (missing.empty() ? "" : ", ") + std::string(kCategories[i].name);
        }
        return missing.empty() ? Outcome{} : Outcome{Wrong, missing};
    });
}

Outcome Value(const InstallFacts &facts)
{
    return OfEachInterface(facts, [](const DeviceFacts &, const InterfaceFacts &one) { return ValueOf(one); });
}

Outcome ValueClass(const InstallFacts &facts)
{
    return OfEachInterface(facts, [](const DeviceFacts &device, const InterfaceFacts &one) {
        const auto named = Transforms(one);
        const bool holds = std::any_of(named.begin(), named.end(), [&](const std::string &text) {
            return SameText(text, OwnClass(*FilterOf(device)));
        });
        return holds ? Outcome{} : Outcome{Wrong, named.empty() ? "" : named.front()};
    });
}

Outcome ValueAlone(const InstallFacts &facts)
{
    return OfEachInterface(facts, [](const DeviceFacts &device, const InterfaceFacts &one) {
        for (const std::string &text : Transforms(one))
        {
            if (one.chain && !SameText(text, OwnClass(*FilterOf(device))))
            {
                return Outcome{Advice, text};
            }
        }
        return Outcome{};
    });
}

Outcome Group(const InstallFacts &facts)
{
    std::string first;
    return OfEachInterface(facts, [&](const DeviceFacts &, const InterfaceFacts &one) {
        const std::string id = one.groupId && !one.groupId->texts.empty() ? one.groupId->texts.front() : "";
        first = first.empty() ? id : first;
        return !id.empty() && SameText(id, first) ? Outcome{} : Outcome{Wrong, id.empty() ? "none" : id};
    });
}

Outcome Sensor(const InstallFacts &facts)
{
    return OfEachDevice(facts, [](const DeviceFacts &device) {
        const bool holds = FilterOf(device) != Filter::Depth ||
                           (IsDword1(device.sensorCameraMode) && IsDword1(device.skipCameraEnumeration));
        return holds ? Outcome{} : Outcome{Wrong, {}};
    });
}

} // namespace tarn_host::judges
