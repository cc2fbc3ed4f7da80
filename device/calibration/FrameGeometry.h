// Which part of the camera's picture a frame shows after it was cut and scaled on its way.
#pragma once

#include <cstdint>

#include "device/calibration/CalibrationTable.h"

namespace mft_core
{

// A frame as it left the camera, followed by the crops and scalings of a chain in their order; each step gives a new
// value. Immutable after Init.
class FrameGeometry
{
  public:
    // The camera's own frame. No size here or below may be 0: the model is then all zero.
    FrameGeometry(std::uint32_t frameWidth, std::uint32_t frameHeight) noexcept;

    // Keeps `croppedWidth` x `croppedHeight` pixels; `leftColumns` and `topRows` before them fall away.
    FrameGeometry Crop(std::uint32_t leftColumns, std::uint32_t topRows, std::uint32_t croppedWidth,
                       std::uint32_t croppedHeight) const noexcept;
    // As the cropping nodes do it: the odd row or column falls away at the bottom or right. The frame must not be
    // smaller.
    FrameGeometry CropCentre(std::uint32_t croppedWidth, std::uint32_t croppedHeight) const noexcept;
    // The whole frame onto another number of pixels, edge onto edge, as the resize kernel does it.
    FrameGeometry Scale(std::uint32_t scaledWidth, std::uint32_t scaledHeight) const noexcept;

    std::uint32_t Width() const noexcept
    {
        return width;
    }
    std::uint32_t Height() const noexcept
    {
        return height;
    }

    // The pinhole model of this frame's pixels. The distortion is the table's: neither step changes ray slopes.
    PinholeModel PinholeOf(const CalibrationTable &table) const noexcept;

  private:
    std::uint32_t cameraWidth;
    std::uint32_t cameraHeight;
    std::uint32_t width;
    std::uint32_t height;
    // The frame's top left corner, an edge and not a pixel's centre, in pixels of the camera's frame.
    double left = 0;
    double top = 0;
    // Pixels of this frame per pixel of the camera's.
    double scaleX = 1;
    double scaleY = 1;
};

} // namespace mft_core
