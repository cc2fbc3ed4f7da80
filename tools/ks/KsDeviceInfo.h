// The camera's answer to the device-information command, decoded.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tarn_host
{

// Names and values in the record's order, the outcome of its checksum at the end. Texts are printable ASCII, whatever
// the camera sent. Empty when `answer` is shorter than the record.
std::vector<std::pair<std::string, std::string>> DecodeDeviceInfo(std::span<const std::uint8_t> answer);

} // namespace tarn_host
