// The actions of "tarn-host ks" on a transform.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tools/ks/KsClient.h"

namespace tarn_host
{

// What an action found: lines for people, an object for scripts.
struct KsReport
{
    std::string text;
    nlohmann::ordered_json json;
};

// Throws HostError when the transform refuses.
using KsAction = std::function<KsReport(const KsClient &)>;

// Each control of the extension unit with its value, range and default.
KsAction ListControls(TransformKind transform);
// Throw UsageError for a name that the transform does not have or a value that cannot be meant.
KsAction GetSetting(TransformKind transform, const std::string &name);
KsAction SetSetting(TransformKind transform, const std::string &name, const std::string &value);
// Sends the data, or asks for so many bytes when `answerBytes` has a value. Throws UsageError for too much of either.
KsAction RunFirmwareCommand(const FirmwareCommand &command, const std::vector<std::uint8_t> &data,
                            std::optional<std::uint32_t> answerBytes);

} // namespace tarn_host
