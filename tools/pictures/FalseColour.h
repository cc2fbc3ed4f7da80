// Depth as colour: near is red, far is violet, no measurement is dark grey.
#pragma once

#include <cstdint>

#include "tools/pictures/Picture.h"

namespace tarn_host
{

// Maps a range of depths to a colour scale. Immutable after Init.
class FalseColour
{
  public:
    // Depths below or above the range take the colour of its end. `farEighthMm` is raised above `nearEighthMm`.
    FalseColour(std::uint32_t nearEighthMm, std::uint32_t farEighthMm) noexcept;

    Rgb Of(std::uint16_t depthEighthMm) const noexcept;
    // 0 is the near end of the scale, 1 the far end.
    static Rgb AtPosition(double position) noexcept;

  private:
    std::uint32_t nearEnd;
    std::uint32_t farEnd;
};

inline constexpr double kDepthUnitsPerMetre = 8000;
inline constexpr Rgb kNoMeasurementColour{40, 40, 40};

} // namespace tarn_host
