// The depth presets as data.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "tarn/depth_presets.h"

namespace mft_core
{

// Limits within which the firmware may adjust a control by itself.
struct AutoRangeLimits
{
    std::uint16_t minimum;
    std::uint16_t maximum;
    std::uint16_t start;
};

// What the auto-range command is sent with.
struct AutoRangeSettings
{
    bool noBlock; // the command goes without its data and switches auto-range off
    AutoRangeLimits motionVersusRange;
    AutoRangeLimits laserPower;
    std::uint32_t adjusts;    // first parameter, bits: 1 motion versus range, 2 laser power
    std::uint32_t frameCount; // second parameter: frames between two adjustments
};

struct HdrSettings
{
    bool on;
    std::uint32_t shortExposureUs; // both only sent when on
    std::uint32_t longExposureUs;
};

struct DepthPreset
{
    TARN_DEPTH_PRESET type;
    const char *name;
    std::uint8_t laserPower;          // 0 to 16
    std::uint8_t accuracy;            // 1 finest, 3 fastest
    std::uint8_t motionVersusRange;   // 0 motion, 100 range
    std::uint8_t filterOption;        // 0 none to 7 strongest
    std::uint8_t confidenceThreshold; // 0 to 15, less is invalid
    AutoRangeSettings autoRange;
    HdrSettings hdr;
};

std::span<const DepthPreset> DepthPresetTable() noexcept;

// Null for an id that is not in the table.
const DepthPreset *FindDepthPreset(std::uint32_t type) noexcept;

// Little-endian, as the firmware wants them.
std::array<std::uint8_t, 12> AutoRangeBlock(const AutoRangeSettings &settings) noexcept;
std::array<std::uint8_t, 8> HdrBlock(const HdrSettings &settings) noexcept;

} // namespace mft_core
