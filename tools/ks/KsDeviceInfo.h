// The camera's answer to the device-information command, decoded.
#pragma once

#include <cstdint>
#include <span>

#include <nlohmann/json.hpp>

namespace tarn_host
{

// An object in the record's order; "record" at its end is true when size and checksum are right. Texts are printable
// ASCII, whatever the camera sent. Null when `answer` is shorter than the record.
nlohmann::ordered_json DecodeDeviceInfo(std::span<const std::uint8_t> answer);

} // namespace tarn_host
