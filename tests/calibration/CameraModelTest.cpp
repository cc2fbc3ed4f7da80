#include "device/calibration/CameraModel.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "device/calibration/FrameGeometry.h"
#include "tests/calibration/CalibrationBytes.h"

using mft_core::CalibrationTable;
using mft_core::PinholeModel;
using mft_core::Quaternion;
using mft_core::RotationMatrix;

namespace
{

CalibrationTable GoodTable()
{
    CalibrationTable table;
    EXPECT_EQ(mft_core::CalibrationCheck::Good, ParseCalibrationTable(tarn_test::GoodCalibrationBytes(), table));
    return table;
}

// The part of the 640 x 480 sensor that a frame shows, worked out by hand: its top left corner and how many pixels of
// the frame one sensor pixel takes.
void ExpectView(std::uint32_t width, std::uint32_t height, double left, double top, double scale)
{
    SCOPED_TRACE(testing::Message() << width << "x" << height);
    const CalibrationTable table = GoodTable();
    const PinholeModel &full = table.pinhole;
    const PinholeModel scaled = ScalePinhole(table, width, height);

    // Corners of the frame, in pixel edges: edge 0 is half a pixel before the centre of pixel 0.
    for (const double edgeX : {0.0, 1.0, width / 3.0, static_cast<double>(width)})
    {
        for (const double edgeY : {0.0, 1.0, height / 3.0, static_cast<double>(height)})
        {
            const double sensorX = left + edgeX / scale - 0.5;
            const double sensorY = top + edgeY / scale - 0.5;
            EXPECT_NEAR((sensorX - full.principalPointX) / full.focalLengthX,
                        (edgeX - 0.5 - scaled.principalPointX) / scaled.focalLengthX, 1e-12);
            EXPECT_NEAR((sensorY - full.principalPointY) / full.focalLengthY,
                        (edgeY - 0.5 - scaled.principalPointY) / scaled.focalLengthY, 1e-12);
        }
    }
}

TEST(CameraModelTest, ASensorPointLiesOnTheSameRayAtEverySize)
{
    ExpectView(640, 480, 0, 0, 1);
    ExpectView(320, 240, 0, 0, 0.5);
    ExpectView(1280, 960, 0, 0, 2);
    ExpectView(1280, 720, 0, 60, 2);
    ExpectView(1920, 1080, 0, 60, 3);
    ExpectView(640, 360, 0, 60, 1);
    ExpectView(360, 360, 80, 0, 0.75);
    ExpectView(480, 640, 140, 0, 4.0 / 3);
    ExpectView(1280, 320, 0, 160, 2);
    EXPECT_EQ(0, ScalePinhole(GoodTable(), 0, 480).focalLengthX);
    EXPECT_EQ(0, ScalePinhole(GoodTable(), 640, 0).focalLengthY);
    EXPECT_EQ(0, mft_core::FrameGeometry(640, 480).Crop(0, 0, 0, 480).PinholeOf(GoodTable()).focalLengthX);
}

TEST(CameraModelTest, CropsAndScalingsOfAChainAddUp)
{
    // 1280 x 720 shows rows 60 to 420 of the sensor twice as large. Columns 101 to 700 and rows 51 to 350 of it, five
    // sixths as large, without 20 columns and 30 rows more: sensor column 101 / 2 + 20 / (2 * 5 / 6) = 62.5 on, row
    // 60 + 51 / 2 + 30 / (5 / 3) = 103.5 on, at a scale of 5 / 3.
    const mft_core::FrameGeometry chain =
        mft_core::FrameGeometry(1280, 720).Crop(101, 51, 600, 300).Scale(500, 250).Crop(20, 30, 460, 200);
    const PinholeModel model = chain.PinholeOf(GoodTable());

    EXPECT_EQ(460u, chain.Width());
    EXPECT_EQ(200u, chain.Height());
    EXPECT_NEAR(474.5 * 5 / 3, model.focalLengthX, 1e-9);
    EXPECT_NEAR(475.25 * 5 / 3, model.focalLengthY, 1e-9);
    EXPECT_NEAR((322.25 - 62.5) * 5 / 3 - 0.5, model.principalPointX, 1e-9);
    EXPECT_NEAR((239.0 - 103.5) * 5 / 3 - 0.5, model.principalPointY, 1e-9);

    // An odd rest stays at the bottom and right, as the cropping nodes leave it.
    const PinholeModel odd = mft_core::FrameGeometry(640, 480).CropCentre(433, 415).PinholeOf(GoodTable());
    EXPECT_NEAR(321.75 - 103, odd.principalPointX, 1e-9);
    EXPECT_NEAR(238.5 - 32, odd.principalPointY, 1e-9);
}

TEST(CameraModelTest, TheTranslationIsInMetres)
{
    EXPECT_EQ((std::array<double, 3>{25 * 0.001, 0.25 * 0.001, -1.5 * 0.001}), TranslationInMetres(GoodTable()));
}

// Rodrigues' formula, rounded to the single precision of the table.
RotationMatrix RotationAbout(const std::array<double, 3> &axis, double angle)
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const auto [x, y, z] = axis;
    RotationMatrix m{c + x * x * (1 - c),     x * y * (1 - c) - z * s, x * z * (1 - c) + y * s,
                     y * x * (1 - c) + z * s, c + y * y * (1 - c),     y * z * (1 - c) - x * s,
                     z * x * (1 - c) - y * s, z * y * (1 - c) + x * s, c + z * z * (1 - c)};
    for (double &element : m)
    {
        element = static_cast<float>(element);
    }
    return m;
}

void ExpectRotation(const std::array<double, 3> &axis, double angle)
{
    const Quaternion q = mft_core::QuaternionOf(RotationAbout(axis, angle));

    const double s = std::sin(angle / 2);
    const double w = std::cos(angle / 2);
    // A quaternion and its negative are the same rotation; at half a turn either sign may come out.
    const double sign = q.x * axis[0] * s + q.y * axis[1] * s + q.z * axis[2] * s + q.w * w < 0 ? -1 : 1;
    EXPECT_NEAR(sign * axis[0] * s, q.x, 2e-7);
    EXPECT_NEAR(sign * axis[1] * s, q.y, 2e-7);
    EXPECT_NEAR(sign * axis[2] * s, q.z, 2e-7);
    EXPECT_NEAR(sign * w, q.w, 2e-7);
    EXPECT_GE(q.w, 0);
    EXPECT_NEAR(1.0, q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w, 1e-12);
}

TEST(CameraModelTest, RotationsUpToHalfATurnBecomeTheirQuaternions)
{
    constexpr double pi = std::numbers::pi;
    for (const double angle : {0.0, pi / 180, pi / 2, pi * 2 / 3, pi - 1e-4, pi})
    {
        ExpectRotation({1, 0, 0}, angle);
        ExpectRotation({0, 1, 0}, angle);
        ExpectRotation({0, 0, 1}, angle);
    }
    std::mt19937 random(20240611); // NOLINT: the same cases in every run
    std::normal_distribution<double> component;
    std::uniform_real_distribution<double> angle(0, pi);
    for (int i = 0; i < 20000; ++i)
    {
        std::array<double, 3> axis{component(random), component(random), component(random)};
        const double length = std::hypot(axis[0], axis[1], axis[2]);
        axis = {axis[0] / length, axis[1] / length, axis[2] / length};
        ExpectRotation(axis, i % 4 == 0 ? pi - 1e-3 * angle(random) : angle(random));
        ASSERT_FALSE(HasFailure()) << "case " << i;
    }
}

} // namespace
