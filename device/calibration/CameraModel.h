// Camera geometry from a calibration table: the pinhole model per frame size, the pose as quaternion and metres.
#pragma once

#include <array>
#include <cstdint>

#include "device/calibration/CalibrationTable.h"

namespace mft_core
{

// x, y, z imaginary, w real.
struct Quaternion
{
    double x = 0;
    double y = 0;
    double z = 0;
    double w = 1;
};

// The reference model as seen in frames of another size. All zero for an empty frame. Thread-safe.
//
// The sensor has the reference's aspect ratio, 4:3. A frame of another ratio shows the largest centred part of the
// sensor that has that ratio (crop), enlarged or reduced to the frame's size (scale):
//     frame wider than 4:3: scale = width / reference width, rows fall away at top and bottom;
//     frame narrower:       scale = height / reference height, columns fall away at both sides.
// With coordinates counted from pixel centres the image's edge lies at -0.5, so
//     f' = f * scale,  c' = (c + 0.5 - crop) * scale - 0.5.
// Source: Hartley and Zisserman, "Multiple View Geometry in Computer Vision", 2nd edition, section 6.1 (the calibration
// matrix under a change of image coordinates).
PinholeModel ScalePinhole(const CalibrationTable &table, std::uint32_t width, std::uint32_t height) noexcept;

// Unit quaternion of a rotation matrix, w not negative. Source: S. W. Shepperd, "Quaternion from Rotation Matrix",
// Journal of Guidance and Control 1(3), 1978: the largest of the four components is found first, so that nothing small
// is divided by. Thread-safe.
Quaternion QuaternionOf(const RotationMatrix &rotation) noexcept;

std::array<double, 3> TranslationInMetres(const CalibrationTable &table) noexcept;

} // namespace mft_core
