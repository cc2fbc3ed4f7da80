#include "tools/ks/KsSettings.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "tarn/depth_presets.h"
#include "tools/command/ExitCode.h"
#include "tools/ks/KsText.h"

namespace tarn_host
{

namespace
{

struct NamedPreset
{
    std::uint32_t preset;
    const char *name;
};

constexpr auto kPresets = std::to_array<NamedPreset>({
    {TARN_DEPTH_PRESET_DEFAULT, "default"},
    {TARN_DEPTH_PRESET_CLOSE_UP, "close-up"},
    {TARN_DEPTH_PRESET_LONG_DISTANCE, "long-distance"},
    {TARN_DEPTH_PRESET_STILL_SCENE, "still-scene"},
    {TARN_DEPTH_PRESET_FAST_MOTION, "fast-motion"},
    {TARN_DEPTH_PRESET_HIGH_CONTRAST, "high-contrast"},
    {TARN_DEPTH_PRESET_LOW_POWER, "low-power"},
    {TARN_DEPTH_PRESET_FACE_LOGIN, "face-login"},
});

std::string Folded(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return c == '_' ? '-' : static_cast<char>(std::tolower(c)); });
    return name;
}

KsReading ReadApiVersion(const KsClient &client)
{
    const KSPROPERTY_TARN_API_VERSION version = client.ApiVersion();
    const std::string text = std::to_string(version.first) + "." + std::to_string(version.second);
    return {text, text};
}

KsReading ReadPreset(const KsClient &client)
{
    const std::uint32_t preset = client.Preset();
    const auto *const found = std::find_if(kPresets.begin(), kPresets.end(),
                                           [preset](const NamedPreset &one) { return one.preset == preset; });
    return {std::to_string(preset) + (found == kPresets.end() ? "" : std::string(" (") + found->name + ")"), preset};
}

// Ids without a name are for the transform to refuse.
std::uint32_t ParsePreset(const std::string &text)
{
    const std::string name = Folded(text);
    const auto *const found =
        std::find_if(kPresets.begin(), kPresets.end(), [&name](const NamedPreset &one) { return one.name == name; });
    if (found != kPresets.end())
    {
        return found->preset;
    }
    if (!text.empty() && std::isdigit(static_cast<unsigned char>(text.front())) != 0)
    {
        return ParseNumber("preset", text);
    }
    std::string names;
    for (const NamedPreset &one : kPresets)
    {
        names += std::string(one.name) + ", ";
    }
    throw UsageError("preset: '" + text + "' is none of " + names + "and no number");
}

KsReading OnOrOff(bool on)
{
    return {on ? "on" : "off", on};
}

KsSetting MakeSwitch(const std::string &name, bool (KsClient::*get)() const, void (KsClient::*set)(bool) const)
{
    const auto parse = [name](const std::string &text) -> std::uint32_t {
        const std::string word = Folded(text);
        if (word != "on" && word != "off")
        {
            throw UsageError(name + ": '" + text + "' is neither on nor off");
        }
        return word == "on" ? 1 : 0;
    };
    return {name, [get](const KsClient &client) { return OnOrOff((client.*get)()); }, parse,
            [set](const KsClient &client, std::uint32_t value) { (client.*set)(value != 0); }};
}

KsSetting MakeControl(const ExtensionControl &control)
{
    const auto read = [control](const KsClient &client) -> KsReading {
        const std::uint8_t value = client.Value(control);
        return {std::to_string(value), value};
    };
    // The range is for the camera to check.
    const auto parse = [name = control.name](const std::string &text) { return ParseNumber(name, text, 0xFF); };
    const auto write = [control](const KsClient &client, std::uint32_t value) {
        client.SetValue(control, static_cast<std::uint8_t>(value));
    };
    return {control.name, read, parse, write};
}

// A firmware command is a write and a read that must not be separated.
bool IsCommand(const ExtensionControl &control)
{
    return IsEqualGUID(control.set, KSPROPERTYSETID_TARN_DEPTH_CONTROL) &&
           control.id == static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::COMMAND);
}

} // namespace

std::vector<KsSetting> SettingsOf(TransformKind transform)
{
    std::vector<KsSetting> settings;
    if (transform == TransformKind::Depth)
    {
        settings = {{"api-version", ReadApiVersion, {}, {}},
                    {"preset", ReadPreset, ParsePreset, &KsClient::SetPreset},
                    MakeSwitch("confidence-map", &KsClient::ConfidenceMap, &KsClient::SetConfidenceMap),
                    MakeSwitch("face-login", &KsClient::FaceLogin, &KsClient::SetFaceLogin)};
    }
    for (const ExtensionControl &control : ExtensionControlsOf(transform))
    {
        if (!IsCommand(control))
        {
            settings.push_back(MakeControl(control));
        }
    }
    return settings;
}

KsSetting FindSetting(TransformKind transform, const std::string &name)
{
    for (const ExtensionControl &control : ExtensionControlsOf(transform))
    {
        if (IsCommand(control) && Folded(control.name) == Folded(name))
        {
            throw UsageError(control.name + " carries firmware commands; send them with \"ks command\"");
        }
    }
    std::string names;
    for (const KsSetting &setting : SettingsOf(transform))
    {
        if (Folded(setting.name) == Folded(name))
        {
            return setting;
        }
        names += (names.empty() ? "" : ", ") + setting.name;
    }
    throw UsageError("the " + std::string(NameOf(transform)) + " transform has no '" + name + "'; it has " + names);
}

} // namespace tarn_host
