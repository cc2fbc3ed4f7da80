#include "tools/installation/FactQueries.h"

#include <algorithm>

namespace tarn_host
{

namespace
{
constexpr std::int64_t kFirstBuildOfB = 25300;
constexpr std::int64_t kFirstBuildOfC = 26100;

char Lower(char letter) noexcept
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}
} // namespace

bool SameText(std::string_view a, std::string_view b) noexcept
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

bool ContainsText(std::string_view text, std::string_view part) noexcept
{
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char x, char y) { return Lower(x) == Lower(y); }) != text.end() ||
           part.empty();
}

bool EndsWithText(std::string_view text, std::string_view end) noexcept
{
    return text.size() >= end.size() && SameText(text.substr(text.size() - end.size()), end);
}

std::optional<Generation> GenerationOf(const InstallFacts &facts) noexcept
{
    if (!facts.system.build)
    {
        return std::nullopt;
    }
    const std::int64_t build = *facts.system.build;
    return build < kFirstBuildOfB ? Generation::A : build < kFirstBuildOfC ? Generation::B : Generation::C;
}

std::optional<Filter> FilterOf(const DeviceFacts &device) noexcept
{
    if (ContainsText(device.instanceId, "&MI_00"))
    {
        return Filter::Depth;
    }
    return ContainsText(device.instanceId, "&MI_02") ? std::optional(Filter::Color) : std::nullopt;
}

std::string_view OwnClass(Filter filter) noexcept
{
    return filter == Filter::Depth ? "{7F9DF308-0F2D-432E-8C8E-D36ED8F12C90}"
                                   : "{01BC2102-6449-429F-8F62-B8D23D1DE6D3}";
}

std::vector<const DeviceFacts *> PresentDevices(const InstallFacts &facts)
{
    std::vector<const DeviceFacts *> present;
    for (const DeviceFacts &device : facts.devices)
    {
        if (device.isPresent && FilterOf(device))
        {
            present.push_back(&device);
        }
    }
    return present;
}

bool HasClass(const std::vector<ClassFacts> &classes, std::string_view clsid) noexcept
{
    return std::any_of(classes.begin(), classes.end(),
                       [&](const ClassFacts &one) { return SameText(one.clsid, clsid); });
}

std::vector<const ClassFacts *> NamedClasses(const InstallFacts &facts)
{
    std::vector<const ClassFacts *> classes;
    for (const ClassFacts &one : facts.classes)
    {
        classes.push_back(&one);
    }
    for (const DeviceFacts *const device : PresentDevices(facts))
    {
        for (const ClassFacts &one : device->classes)
        {
            classes.push_back(&one);
        }
    }
    return classes;
}

bool NamesFile(const ClassFacts &named, std::string_view path) noexcept
{
    if (!named.server || named.server->texts.empty())
    {
        return false;
    }
    std::string_view text = named.server->texts.front();
    text.remove_prefix(text.starts_with('"') ? 1 : 0);
    text.remove_suffix(text.ends_with('"') ? 1 : 0);
    const std::size_t variable = text.rfind('%');
    return variable == std::string_view::npos ? SameText(text, path) : EndsWithText(path, text.substr(variable + 1));
}

std::vector<const FileFacts *> JudgedFiles(const InstallFacts &facts)
{
    const auto classes = NamedClasses(facts);
    std::vector<const FileFacts *> files;
    for (const FileFacts &file : facts.files)
    {
        const bool isNamed = std::any_of(classes.begin(), classes.end(),
                                         [&](const ClassFacts *one) { return NamesFile(*one, file.path); });
        const bool isLoaded = std::any_of(facts.loaded.begin(), facts.loaded.end(),
                                          [&](const LoadedFacts &one) { return SameText(one.path, file.path); });
        if (classes.empty() ? isLoaded : isNamed)
        {
            files.push_back(&file);
        }
    }
    return files;
}

} // namespace tarn_host
