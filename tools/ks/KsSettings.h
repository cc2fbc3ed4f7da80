// What "tarn-host ks" can get and set by name: the private properties and the extension unit's controls.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tools/ks/KsClient.h"

namespace tarn_host
{

// A value for people and for scripts.
struct KsReading
{
    std::string text;
    nlohmann::ordered_json json;
};

// Value. `read` and `write` throw HostError, `parse` throws UsageError.
struct KsSetting
{
    std::string name;
    std::function<KsReading(const KsClient &)> read;
    std::function<std::uint32_t(const std::string &)> parse; // empty, as is `write`, for what can only be read
    std::function<void(const KsClient &, std::uint32_t)> write;
};

// In the order in which they are listed for people.
std::vector<KsSetting> SettingsOf(TransformKind transform);

// Case does not matter, nor whether words are joined by '-' or '_'. Throws UsageError, listing the names.
KsSetting FindSetting(TransformKind transform, const std::string &name);

} // namespace tarn_host
