#include "tools/pictures/FalseColour.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarn_host
{

namespace
{

// Equal steps along the scale; chosen so that neighbours differ in hue and brightness falls with distance.
constexpr std::array<Rgb, 7> kScale{
    {{214, 40, 40}, {247, 127, 0}, {252, 215, 60}, {90, 190, 90}, {40, 160, 190}, {40, 80, 190}, {75, 25, 110}}};

std::uint8_t Mix(std::uint8_t from, std::uint8_t to, double share) noexcept
{
    return static_cast<std::uint8_t>(std::lround(from + (to - from) * share));
}

} // namespace

FalseColour::FalseColour(std::uint32_t nearEighthMm, std::uint32_t farEighthMm) noexcept
    : nearEnd(nearEighthMm), farEnd(std::max(farEighthMm, nearEighthMm + 1))
{
}

Rgb FalseColour::Of(std::uint16_t depthEighthMm) const noexcept
{
    if (depthEighthMm == 0)
    {
        return kNoMeasurementColour;
    }
    const double span = static_cast<double>(farEnd) - nearEnd;
    return AtPosition((static_cast<double>(depthEighthMm) - nearEnd) / span);
}

Rgb FalseColour::AtPosition(double position) noexcept
{
    const double place = std::clamp(position, 0.0, 1.0) * (kScale.size() - 1);
    const std::size_t index = std::min(static_cast<std::size_t>(place), kScale.size() - 2);
    const double share = place - static_cast<double>(index);
    const Rgb &from = kScale[index];
    const Rgb &to = kScale[index + 1];
    return {Mix(from.red, to.red, share), Mix(from.green, to.green, share), Mix(from.blue, to.blue, share)};
}

} // namespace tarn_host
