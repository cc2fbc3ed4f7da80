#include "device/calibration/CalibrationTable.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "base/Crc32.h"
#include "tarn/calibration_table.h"

namespace mft_core
{

namespace
{
constexpr std::uint32_t kLargestSide = 16384;
// Limits far outside any camera that can be built, close enough to tell a table from noise.
constexpr double kShortestFocalLength = 0.05; // of the width: 168 degrees
constexpr double kLongestFocalLength = 100;   // of the width: half a degree
constexpr double kLargestDistortion = 10;
constexpr double kLargestTranslationMm = 1000;
constexpr double kRotationTolerance = 1e-3;

bool IsFinite(const TARN_CALIBRATION_TABLE &raw)
{
    const float values[] = {raw.focalLengthX, raw.focalLengthY, raw.principalPointX, raw.principalPointY, raw.radialK1,
                            raw.radialK2,     raw.radialK3,     raw.tangentialP1,    raw.tangentialP2};
    const auto finite = [](float value) { return std::isfinite(value); };
    return std::all_of(std::begin(values), std::end(values), finite) &&
           std::all_of(std::begin(raw.rotation), std::end(raw.rotation), finite) &&
           std::all_of(std::begin(raw.translationMm), std::end(raw.translationMm), finite);
}

bool IsReferenceSize(std::uint32_t width, std::uint32_t height)
{
    return width > 0 && width <= kLargestSide && height <= kLargestSide && width * 3 == height * 4;
}

bool IsPlausible(const PinholeModel &model, double width, double height)
{
    const auto isFocalLength = [&](double length) {
        return length >= kShortestFocalLength * width && length <= kLongestFocalLength * width;
    };
    return isFocalLength(model.focalLengthX) && isFocalLength(model.focalLengthY) && model.principalPointX >= -0.5 &&
           model.principalPointX <= width - 0.5 && model.principalPointY >= -0.5 &&
           model.principalPointY <= height - 0.5;
}

bool IsPlausible(const DistortionCoefficients &distortion)
{
    const double values[] = {distortion.radialK1, distortion.radialK2, distortion.radialK3, distortion.tangentialP1,
                             distortion.tangentialP2};
    return std::all_of(std::begin(values), std::end(values),
                       [](double value) { return std::abs(value) <= kLargestDistortion; });
}

// Rows of unit length, at right angles, and no mirror image.
bool IsRotation(const RotationMatrix &m)
{
    for (std::size_t i = 0; i < 3; ++i)
    {
        for (std::size_t j = i; j < 3; ++j)
        {
            double product = 0;
            for (std::size_t k = 0; k < 3; ++k)
            {
                product += m[3 * i + k] * m[3 * j + k];
            }
            if (std::abs(product - (i == j ? 1.0 : 0.0)) > kRotationTolerance)
            {
                return false;
            }
        }
    }
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
               m[2] * (m[3] * m[7] - m[4] * m[6]) >
           0;
}

CalibrationCheck CheckFrame(std::span<const std::uint8_t> bytes, const TARN_CALIBRATION_TABLE &raw)
{
    if (raw.magic != TARN_CALIBRATION_MAGIC)
    {
        return CalibrationCheck::WrongMagic;
    }
    if (raw.version != TARN_CALIBRATION_VERSION)
    {
        return CalibrationCheck::UnknownVersion;
    }
    if (raw.size != sizeof(raw))
    {
        return CalibrationCheck::WrongSize;
    }
    return user_space_frameworks::Crc32(bytes.first(offsetof(TARN_CALIBRATION_TABLE, checksum))) == raw.checksum
               ? CalibrationCheck::Good
               : CalibrationCheck::WrongChecksum;
}

CalibrationCheck CheckContents(const CalibrationTable &table)
{
    if (!IsReferenceSize(table.referenceWidth, table.referenceHeight))
    {
        return CalibrationCheck::WrongReferenceSize;
    }
    if (!IsPlausible(table.pinhole, table.referenceWidth, table.referenceHeight))
    {
        return CalibrationCheck::AbsurdPinhole;
    }
    if (!IsPlausible(table.distortion))
    {
        return CalibrationCheck::AbsurdDistortion;
    }
    if (!IsRotation(table.rotation))
    {
        return CalibrationCheck::NoRotation;
    }
    const bool isNear = std::all_of(table.translationMm.begin(), table.translationMm.end(),
                                    [](double value) { return std::abs(value) <= kLargestTranslationMm; });
    return isNear ? CalibrationCheck::Good : CalibrationCheck::AbsurdTranslation;
}
} // namespace

const char *CalibrationCheckName(CalibrationCheck check) noexcept
{
    switch (check)
    {
    case CalibrationCheck::Good:
        return "good";
    case CalibrationCheck::Truncated:
        return "truncated";
    case CalibrationCheck::WrongMagic:
        return "wrong magic";
    case CalibrationCheck::UnknownVersion:
        return "unknown version";
    case CalibrationCheck::WrongSize:
        return "wrong size";
    case CalibrationCheck::WrongChecksum:
        return "wrong checksum";
    case CalibrationCheck::NotFinite:
        return "a value is not finite";
    case CalibrationCheck::WrongReferenceSize:
        return "reference size is not 4:3";
    case CalibrationCheck::AbsurdPinhole:
        return "absurd pinhole model";
    case CalibrationCheck::AbsurdDistortion:
        return "absurd distortion";
    case CalibrationCheck::NoRotation:
        return "the rotation is none";
    case CalibrationCheck::AbsurdTranslation:
        return "absurd translation";
    }
    return "unknown";
}

CalibrationCheck ParseCalibrationTable(std::span<const std::uint8_t> bytes, CalibrationTable &table) noexcept
{
    TARN_CALIBRATION_TABLE raw{};
    if (bytes.size() < sizeof(raw))
    {
        return CalibrationCheck::Truncated;
    }
    std::memcpy(&raw, bytes.data(), sizeof(raw));
    if (const CalibrationCheck check = CheckFrame(bytes, raw); check != CalibrationCheck::Good)
    {
        return check;
    }
    if (!IsFinite(raw))
    {
        return CalibrationCheck::NotFinite;
    }
    CalibrationTable read;
    read.referenceWidth = raw.referenceWidth;
    read.referenceHeight = raw.referenceHeight;
    read.pinhole = {raw.focalLengthX, raw.focalLengthY, raw.principalPointX, raw.principalPointY};
    read.distortion = {raw.radialK1, raw.radialK2, raw.radialK3, raw.tangentialP1, raw.tangentialP2};
    std::copy(std::begin(raw.rotation), std::end(raw.rotation), read.rotation.begin());
    std::copy(std::begin(raw.translationMm), std::end(raw.translationMm), read.translationMm.begin());
    const CalibrationCheck check = CheckContents(read);
    if (check == CalibrationCheck::Good)
    {
        table = read;
    }
    return check;
}

} // namespace mft_core
