// What a simulated camera looks at: a source of depth, infrared, confidence and color pictures.
#pragma once

#include <cstdint>
#include <vector>

namespace tarn_sim
{

enum class Plane : std::uint8_t
{
    DepthEighthMm, // 16 bits per pixel, 0 = no measurement
    Infrared,      // 16 bits per pixel, 10 of them used
    Confidence,    // 8 bits per pixel
    Yuy2           // 16 bits per pixel, two pixels share their chroma
};

struct FrameRequest
{
    std::uint64_t number = 0; // of the pin's frames, from 0
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool illuminated = true;
};

// Owned by the camera configuration and shared by its pins; asked on the capture thread only, planes in any order.
class IFrameSource
{
  public:
    virtual ~IFrameSource() = default;

    // Fills `pixels` (rows without padding; room for width x height values of the plane's size).
    // Throws std::runtime_error when it cannot; the camera then counts a failed frame and goes on.
    virtual void Render(const FrameRequest &request, Plane plane, std::uint8_t *pixels) = 0;

    // Number of distinct pictures before the source repeats itself; 0 when there is no such number.
    virtual std::uint64_t PictureCount() const noexcept
    {
        return 0;
    }
};

} // namespace tarn_sim
