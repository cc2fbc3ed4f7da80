// What the simulated camera's own calibration says it sees, distortion included: ramps of known slope around points
// of known direction.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "sim/CameraRecords.h"
#include "sim/FrameSource.h"

namespace tarn_test
{

// x / z and y / z of a point that the camera sees; +x right, +y down.
using Ray = std::array<double, 2>;

// The ideal ray of an observed one. Brown's model: ideal to observed, r2 of the ideal.
inline Ray Undistort(const TARN_CALIBRATION_TABLE &lens, const Ray &observed)
{
    Ray ideal = observed;
    for (int i = 0; i < 50; ++i)
    {
        const auto [x, y] = ideal;
        const double r2 = x * x + y * y;
        const double radial = 1 + r2 * (lens.radialK1 + r2 * (lens.radialK2 + r2 * lens.radialK3));
        const double p1 = lens.tangentialP1;
        const double p2 = lens.tangentialP2;
        const Ray next{(observed[0] - 2 * p1 * x * y - p2 * (r2 + 2 * x * x)) / radial,
                       (observed[1] - 2 * p2 * x * y - p1 * (r2 + 2 * y * y)) / radial};
        const double change = std::abs(next[0] - x) + std::abs(next[1] - y);
        ideal = next;
        if (change < 1e-9)
        {
            break;
        }
    }
    return ideal;
}

inline Ray Distort(const TARN_CALIBRATION_TABLE &lens, const Ray &ideal)
{
    const auto [x, y] = ideal;
    const double r2 = x * x + y * y;
    const double radial = 1 + r2 * (lens.radialK1 + r2 * (lens.radialK2 + r2 * lens.radialK3));
    const double p1 = lens.tangentialP1;
    const double p2 = lens.tangentialP2;
    return {x * radial + 2 * p1 * x * y + p2 * (r2 + 2 * x * x), y * radial + 2 * p2 * x * y + p1 * (r2 + 2 * y * y)};
}

// Around each probe a small square with a ramp in it, nothing elsewhere; depth and infrared alike. Confined: change the
// probes only while no frame is made.
class ProbeScene : public tarn_sim::IFrameSource
{
  public:
    static constexpr double kMiddle = 512; // the value at a probe
    static constexpr double kGain = 64;    // per pixel of the camera's reference size, in the middle of its picture

    // `axis` 0: values rise to the right of each probe, 1: downwards. They end at 0 and 1023.
    void Show(std::vector<Ray> rays, std::size_t risingAxis)
    {
        probes = std::move(rays);
        axis = risingAxis;
    }

    // The sensor is 640 x 480; a frame of another ratio shows its largest centred part.
    void Render(const tarn_sim::FrameRequest &request, tarn_sim::Plane plane, std::uint8_t *pixels) override
    {
        const std::size_t bytesPerPixel = plane == tarn_sim::Plane::Confidence ? 1 : 2;
        std::memset(pixels, 0, std::size_t{request.width} * request.height * bytesPerPixel);
        if (plane == tarn_sim::Plane::Confidence)
        {
            return;
        }
        const double sensorPixels = std::min(640.0 / request.width, 480.0 / request.height); // per pixel of the frame
        for (const Ray &probe : probes)
        {
            const Ray observed = Distort(lens, probe);
            const double sensorX = observed[0] * lens.focalLengthX + lens.principalPointX;
            const double sensorY = observed[1] * lens.focalLengthY + lens.principalPointY;
            const auto centreX = std::lround((sensorX - 319.5) / sensorPixels + request.width / 2.0 - 0.5);
            const auto centreY = std::lround((sensorY - 239.5) / sensorPixels + request.height / 2.0 - 0.5);
            const auto inside = [](long value, std::uint32_t size) {
                return std::clamp<long>(value, 0, static_cast<long>(size));
            };
            for (long y = inside(centreY - kReach, request.height); y < inside(centreY + kReach, request.height); ++y)
            {
                for (long x = inside(centreX - kReach, request.width); x < inside(centreX + kReach, request.width); ++x)
                {
                    const double atX = 319.5 + (static_cast<double>(x) + 0.5 - request.width / 2.0) * sensorPixels;
                    const double atY = 239.5 + (static_cast<double>(y) + 0.5 - request.height / 2.0) * sensorPixels;
                    const std::uint16_t value =
                        ValueAt(probe, Undistort(lens, {(atX - lens.principalPointX) / lens.focalLengthX,
                                                        (atY - lens.principalPointY) / lens.focalLengthY}));
                    std::memcpy(pixels +
                                    2 * (static_cast<std::size_t>(y) * request.width + static_cast<std::size_t>(x)),
                                &value, sizeof(value));
                }
            }
        }
    }

    const TARN_CALIBRATION_TABLE lens = tarn_sim::DefaultCalibration();

  private:
    static constexpr long kReach = 20; // pixels; the ramp ends after 8 of the reference size

    std::uint16_t ValueAt(const Ray &probe, const Ray &ray) const
    {
        const double focalLength = axis == 0 ? lens.focalLengthX : lens.focalLengthY;
        const double offset = ray.at(axis) - probe.at(axis);
        return static_cast<std::uint16_t>(std::lround(std::clamp(kMiddle + kGain * focalLength * offset, 0.0, 1023.0)));
    }

    std::vector<Ray> probes;
    std::size_t axis = 0;
};

} // namespace tarn_test
