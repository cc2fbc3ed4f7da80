#include "device/calibration/CameraModel.h"

#include <algorithm>
#include <cmath>

namespace mft_core
{

PinholeModel ScalePinhole(const CalibrationTable &table, std::uint32_t width, std::uint32_t height) noexcept
{
    if (width == 0 || height == 0 || table.referenceWidth == 0 || table.referenceHeight == 0)
    {
        return {};
    }
    const double frameWidth = width;
    const double frameHeight = height;
    const double referenceWidth = table.referenceWidth;
    const double referenceHeight = table.referenceHeight;
    const double scale = std::max(frameWidth / referenceWidth, frameHeight / referenceHeight);
    const double cropX = (referenceWidth - frameWidth / scale) / 2;
    const double cropY = (referenceHeight - frameHeight / scale) / 2;
    const PinholeModel &reference = table.pinhole;
    return {reference.focalLengthX * scale, reference.focalLengthY * scale,
            (reference.principalPointX + 0.5 - cropX) * scale - 0.5,
            (reference.principalPointY + 0.5 - cropY) * scale - 0.5};
}

Quaternion QuaternionOf(const RotationMatrix &m) noexcept
{
    const double trace = m[0] + m[4] + m[8];
    const double largest = std::max({trace, m[0], m[4], m[8]});
    Quaternion q;
    if (largest == trace)
    {
        q = {m[7] - m[5], m[2] - m[6], m[3] - m[1], 1 + trace};
    }
    else if (largest == m[0])
    {
        q = {1 + 2 * m[0] - trace, m[1] + m[3], m[2] + m[6], m[7] - m[5]};
    }
    else if (largest == m[4])
    {
        q = {m[1] + m[3], 1 + 2 * m[4] - trace, m[5] + m[7], m[2] - m[6]};
    }
    else
    {
        q = {m[2] + m[6], m[5] + m[7], 1 + 2 * m[8] - trace, m[3] - m[1]};
    }
    // The matrix came from single precision, so the length is only nearly what it should be.
    const double length = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    const double factor = (q.w < 0 ? -1 : 1) / length;
    return {q.x * factor, q.y * factor, q.z * factor, q.w * factor};
}

std::array<double, 3> TranslationInMetres(const CalibrationTable &table) noexcept
{
    constexpr double kMetresPerMm = 0.001;
    return {table.translationMm[0] * kMetresPerMm, table.translationMm[1] * kMetresPerMm,
            table.translationMm[2] * kMetresPerMm};
}

} // namespace mft_core
