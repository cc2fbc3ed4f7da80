#include "device/DepthPresetTable.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace mft_core
{

namespace
{
constexpr AutoRangeSettings kNoAutoRange{true, {0, 0, 0}, {0, 0, 0}, 0, 0};
constexpr HdrSettings kNoHdr{false, 0, 0};

// clang-format off
constexpr DepthPreset kPresets[] = {
    // type, name, laser, accuracy, motion/range, filter, confidence, auto-range, HDR
    {TARN_DEPTH_PRESET_DEFAULT,       "default",       16, 2,   9, 5, 3, {false, {0, 40, 9}, {8, 16, 16}, 3, 2},     kNoHdr},
    {TARN_DEPTH_PRESET_CLOSE_UP,      "close-up",       8, 1,   2, 5, 4, {false, {0, 10, 2}, {2, 10, 8}, 3, 1},      kNoHdr},
    {TARN_DEPTH_PRESET_LONG_DISTANCE, "long distance", 16, 2,  90, 6, 2, {false, {40, 100, 90}, {16, 16, 16}, 1, 4}, kNoHdr},
    {TARN_DEPTH_PRESET_STILL_SCENE,   "still scene",   16, 1,  60, 7, 6, kNoAutoRange,                               kNoHdr},
    {TARN_DEPTH_PRESET_FAST_MOTION,   "fast motion",   16, 3,   0, 2, 2, kNoAutoRange,                               kNoHdr},
    {TARN_DEPTH_PRESET_HIGH_CONTRAST, "high contrast", 16, 2,  30, 5, 2, {false, {10, 60, 30}, {16, 16, 16}, 1, 2},  {true, 500, 8000}},
    {TARN_DEPTH_PRESET_LOW_POWER,     "low power",      4, 2,  20, 6, 5, kNoAutoRange,                               kNoHdr},
    {TARN_DEPTH_PRESET_FACE_LOGIN,    "face login",    12, 2,   1, 0, 1, kNoAutoRange,                               kNoHdr},
};
// clang-format on

template <class Value>
std::uint8_t *Append(std::uint8_t *at, Value value)
{
    std::memcpy(at, &value, sizeof(value));
    return at + sizeof(value);
}
} // namespace

std::span<const DepthPreset> DepthPresetTable() noexcept
{
    return kPresets;
}

const DepthPreset *FindDepthPreset(std::uint32_t type) noexcept
{
    const auto *const found = std::find_if(std::begin(kPresets), std::end(kPresets), [&](const DepthPreset &preset) {
        return static_cast<std::uint32_t>(preset.type) == type;
    });
    return found == std::end(kPresets) ? nullptr : found;
}

std::array<std::uint8_t, 12> AutoRangeBlock(const AutoRangeSettings &settings) noexcept
{
    std::array<std::uint8_t, 12> block{};
    std::uint8_t *at = block.data();
    for (const AutoRangeLimits &limits : {settings.motionVersusRange, settings.laserPower})
    {
        at = Append(at, limits.minimum);
        at = Append(at, limits.maximum);
        at = Append(at, limits.start);
    }
    return block;
}

std::array<std::uint8_t, 8> HdrBlock(const HdrSettings &settings) noexcept
{
    std::array<std::uint8_t, 8> block{};
    Append(Append(block.data(), settings.shortExposureUs), settings.longExposureUs);
    return block;
}

} // namespace mft_core
