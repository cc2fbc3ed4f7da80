#include "device/calibration/FrameGeometry.h"

#include "device/calibration/CameraModel.h"

namespace mft_core
{

FrameGeometry::FrameGeometry(std::uint32_t frameWidth, std::uint32_t frameHeight) noexcept
    : cameraWidth(frameWidth), cameraHeight(frameHeight), width(frameWidth), height(frameHeight)
{
}

FrameGeometry FrameGeometry::Crop(std::uint32_t leftColumns, std::uint32_t topRows, std::uint32_t croppedWidth,
                                  std::uint32_t croppedHeight) const noexcept
{
    FrameGeometry cropped = *this;
    cropped.left += leftColumns / scaleX;
    cropped.top += topRows / scaleY;
    cropped.width = croppedWidth;
    cropped.height = croppedHeight;
    return cropped;
}

FrameGeometry FrameGeometry::CropCentre(std::uint32_t croppedWidth, std::uint32_t croppedHeight) const noexcept
{
    return Crop((width - croppedWidth) / 2, (height - croppedHeight) / 2, croppedWidth, croppedHeight);
}

FrameGeometry FrameGeometry::Scale(std::uint32_t scaledWidth, std::uint32_t scaledHeight) const noexcept
{
    FrameGeometry scaled = *this;
    scaled.scaleX *= static_cast<double>(scaledWidth) / width;
    scaled.scaleY *= static_cast<double>(scaledHeight) / height;
    scaled.width = scaledWidth;
    scaled.height = scaledHeight;
    return scaled;
}

PinholeModel FrameGeometry::PinholeOf(const CalibrationTable &table) const noexcept
{
    if (width == 0 || height == 0)
    {
        return {};
    }
    const PinholeModel camera = ScalePinhole(table, cameraWidth, cameraHeight);
    return {camera.focalLengthX * scaleX, camera.focalLengthY * scaleY,
            (camera.principalPointX + 0.5 - left) * scaleX - 0.5, (camera.principalPointY + 0.5 - top) * scaleY - 0.5};
}

} // namespace mft_core
