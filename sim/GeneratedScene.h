// A built-in moving scene whose every pixel can be computed from the frame number.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <tuple>
#include <vector>

#include "sim/FrameSource.h"

namespace tarn_sim
{

// A slanted wall from 0.9 m to 2.5 m, a ball at 0.55 m that circles in front of it, a box that stands still at 1.2 m,
// and a band without measurement at the left edge. Coordinates scale with the picture; one that is not 4:3 shows the
// largest centred part of that ratio, as the camera's calibration has it. Thread-safe.
class GeneratedScene final : public IFrameSource
{
  public:
    void Render(const FrameRequest &request, Plane plane, std::uint8_t *pixels) override;
    std::uint64_t PictureCount() const noexcept override
    {
        return kPictureCount;
    }

    // The same values, pixel by pixel. x < width, y < height.
    static std::uint16_t DepthEighthMm(const FrameRequest &request, std::uint32_t x, std::uint32_t y) noexcept;
    static std::uint16_t Infrared(const FrameRequest &request, std::uint32_t x, std::uint32_t y) noexcept;
    static std::uint8_t Confidence(const FrameRequest &request, std::uint32_t x, std::uint32_t y) noexcept;
    static double DepthMillimetres(const FrameRequest &request, std::uint32_t x, std::uint32_t y) noexcept
    {
        return DepthEighthMm(request, x, y) / 8.0;
    }

    static constexpr std::uint64_t kPictureCount = 240; // frames per round of the ball

  private:
    using BackgroundKey = std::tuple<std::uint32_t, std::uint32_t, Plane, bool>;

    std::mutex lock;
    std::map<BackgroundKey, std::vector<std::uint8_t>> backgrounds; // guarded by lock; the scene without the ball
};

} // namespace tarn_sim
