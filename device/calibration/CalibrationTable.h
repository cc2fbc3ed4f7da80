// The camera's calibration table: taken from raw bytes only when everything in it holds.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace mft_core
{

// Brown-Conrady coefficients; they act on ray slopes (x / z, y / z), so they are the same for every frame size.
struct DistortionCoefficients
{
    double radialK1 = 0;
    double radialK2 = 0;
    double radialK3 = 0;
    double tangentialP1 = 0;
    double tangentialP2 = 0;
};

// A pixel's centre has whole coordinates; the top left pixel's is (0, 0).
struct PinholeModel
{
    double focalLengthX = 0;
    double focalLengthY = 0;
    double principalPointX = 0;
    double principalPointY = 0;
};

using RotationMatrix = std::array<double, 9>; // row by row

struct CalibrationTable
{
    std::uint32_t referenceWidth = 0;
    std::uint32_t referenceHeight = 0;
    PinholeModel pinhole; // at the reference size
    DistortionCoefficients distortion;
    RotationMatrix rotation{}; // depth to color camera
    std::array<double, 3> translationMm{};
};

enum class CalibrationCheck : std::uint8_t
{
    Good,
    Truncated,
    WrongMagic,
    UnknownVersion,
    WrongSize,
    WrongChecksum,
    NotFinite,
    WrongReferenceSize,
    AbsurdPinhole,
    AbsurdDistortion,
    NoRotation,
    AbsurdTranslation
};

// For traces.
const char *CalibrationCheckName(CalibrationCheck check) noexcept;

// Reads a table; bytes behind it are not looked at. `table` is untouched unless the answer is Good. Thread-safe.
CalibrationCheck ParseCalibrationTable(std::span<const std::uint8_t> bytes, CalibrationTable &table) noexcept;

} // namespace mft_core
