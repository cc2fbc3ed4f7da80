// The camera's table as bytes, and the camera models that are made of it.
#include "device/calibration/CalibrationTable.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>
#include <span>

#include <gtest/gtest.h>

#include "base/Crc32.h"
#include "device/calibration/CameraModel.h"
#include "device/calibration/FrameGeometry.h"
#include "tarn/calibration_table.h"

using namespace mft_core;

namespace
{

// Made by another program: 640 x 480, focal lengths 474.5 and 475.25, principal point (321.75, 238.5), a rotation that
// turns x into y, y into z and z into x, translation (25, 0.25, -1.5) mm.
std::vector<std::uint8_t> GoodCalibrationBytes()
{
    return {0x54, 0x43, 0x41, 0x4C, 0x01, 0x00, 0x68, 0x00, 0x80, 0x02, 0x00, 0x00, 0xE0, 0x01, 0x00, 0x00, 0x00, 0x40,
            0xED, 0x43, 0x00, 0xA0, 0xED, 0x43, 0x00, 0xE0, 0xA0, 0x43, 0x00, 0x80, 0x6E, 0x43, 0x00, 0x00, 0x00, 0xBE,
            0x00, 0x00, 0x80, 0x3D, 0x0A, 0xD7, 0x23, 0xBC, 0x6F, 0x12, 0x03, 0x3A, 0x6F, 0x12, 0x83, 0xB9, 0x00, 0x00,
            0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x00,
            0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
            0xC8, 0x41, 0x00, 0x00, 0x80, 0x3E, 0x00, 0x00, 0xC0, 0xBF, 0x68, 0x46, 0x0F, 0xC5};
}

// The good table with one value replaced and the checksum made right again.
template <class Value>
std::vector<std::uint8_t> CalibrationBytesWith(std::size_t offset, Value value)
{
    std::vector<std::uint8_t> bytes = GoodCalibrationBytes();
    std::memcpy(bytes.data() + offset, &value, sizeof(value));
    constexpr std::size_t kChecksumAt = offsetof(TARN_CALIBRATION_TABLE, checksum);
    const std::uint32_t checksum = user_space_frameworks::Crc32(std::span(bytes).first(kChecksumAt));
    std::memcpy(bytes.data() + kChecksumAt, &checksum, sizeof(checksum));
    return bytes;
}

CalibrationCheck Check(const std::vector<std::uint8_t> &bytes)
{
    CalibrationTable table;
    table.referenceWidth = 7;
    const CalibrationCheck check = ParseCalibrationTable(bytes, table);
    EXPECT_EQ(check == CalibrationCheck::Good, table.referenceWidth != 7) << "untouched unless good";
    return check;
}

TEST(CalibrationTableTest, EveryFieldIsReadFromItsPlace)
{
    CalibrationTable table;
    std::vector<std::uint8_t> bytes = GoodCalibrationBytes();
    bytes.resize(1024, 0xEE); // a camera may answer more than the table

    ASSERT_EQ(CalibrationCheck::Good, ParseCalibrationTable(bytes, table));

    EXPECT_EQ(640u, table.referenceWidth);
    EXPECT_EQ(480u, table.referenceHeight);
    EXPECT_EQ(474.5, table.pinhole.focalLengthX);
    EXPECT_EQ(475.25, table.pinhole.focalLengthY);
    EXPECT_EQ(321.75, table.pinhole.principalPointX);
    EXPECT_EQ(238.5, table.pinhole.principalPointY);
    EXPECT_EQ(-0.125, table.distortion.radialK1);
    EXPECT_EQ(0.0625, table.distortion.radialK2);
    EXPECT_FLOAT_EQ(-0.01F, static_cast<float>(table.distortion.radialK3));
    EXPECT_FLOAT_EQ(0.0005F, static_cast<float>(table.distortion.tangentialP1));
    EXPECT_FLOAT_EQ(-0.00025F, static_cast<float>(table.distortion.tangentialP2));
    EXPECT_EQ((RotationMatrix{0, 0, 1, 1, 0, 0, 0, 1, 0}), table.rotation);
    EXPECT_EQ((std::array<double, 3>{25.0, 0.25, -1.5}), table.translationMm);
}

TEST(CalibrationTableTest, EveryTruncatedTableIsRefused)
{
    const std::vector<std::uint8_t> good = GoodCalibrationBytes();
    for (std::size_t length = 0; length < good.size(); ++length)
    {
        // In a block of its own size, so that a read past its end is seen.
        const std::vector<std::uint8_t> bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(CalibrationCheck::Truncated, Check(bytes)) << length;
    }
}

TEST(CalibrationTableTest, EveryFlippedBitIsFound)
{
    for (std::size_t at = 0; at < GoodCalibrationBytes().size(); ++at)
    {
        for (int bit = 0; bit < 8; ++bit)
        {
            std::vector<std::uint8_t> bytes = GoodCalibrationBytes();
            bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ (1U << bit));
            EXPECT_NE(CalibrationCheck::Good, Check(bytes)) << "byte " << at << " bit " << bit;
        }
    }
}

TEST(CalibrationTableTest, NoValueThatIsNotFiniteGetsThrough)
{
    const float values[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity()};
    for (std::size_t at = offsetof(TARN_CALIBRATION_TABLE, focalLengthX);
         at < offsetof(TARN_CALIBRATION_TABLE, checksum); at += sizeof(float))
    {
        for (const float value : values)
        {
            EXPECT_EQ(CalibrationCheck::NotFinite, Check(CalibrationBytesWith(at, value))) << at << " " << value;
        }
    }
}

TEST(CalibrationTableTest, ASealedTableWithoutSenseIsRefused)
{
    using Raw = TARN_CALIBRATION_TABLE;
    const auto expect = [](CalibrationCheck check, std::size_t at, auto... values) {
        for (const auto value : {values...})
        {
            EXPECT_EQ(check, Check(CalibrationBytesWith(at, value))) << "byte " << at << ": " << value;
        }
    };
    expect(CalibrationCheck::WrongMagic, offsetof(Raw, magic), 0U);
    expect(CalibrationCheck::UnknownVersion, offsetof(Raw, version), std::uint16_t{2});
    expect(CalibrationCheck::WrongSize, offsetof(Raw, size), std::uint16_t{0xFFFF}, std::uint16_t{0});
    expect(CalibrationCheck::WrongReferenceSize, offsetof(Raw, referenceWidth), 0U, 641U, 0x80000000U, 0xFFFFFFFFU);
    expect(CalibrationCheck::AbsurdPinhole, offsetof(Raw, focalLengthX), 0.0F, -474.5F, 1.0F, 1e30F);
    expect(CalibrationCheck::AbsurdPinhole, offsetof(Raw, focalLengthY), 0.0F, -474.5F, 1.0F, 1e30F);
    expect(CalibrationCheck::AbsurdPinhole, offsetof(Raw, principalPointX), 640.0F);
    expect(CalibrationCheck::AbsurdPinhole, offsetof(Raw, principalPointY), -1.0F);
    expect(CalibrationCheck::AbsurdDistortion, offsetof(Raw, radialK3), -1e6F);
    expect(CalibrationCheck::AbsurdTranslation, offsetof(Raw, translationMm), 1e4F);
}

TEST(CalibrationTableTest, AMatrixThatIsNoRotationIsRefused)
{
    constexpr std::size_t kRotation = offsetof(TARN_CALIBRATION_TABLE, rotation);
    using Matrix = std::array<float, 9>;
    for (const Matrix &matrix : {Matrix{},                               // zero
                                 Matrix{-1, 0, 0, 0, 1, 0, 0, 0, 1},     // mirror
                                 Matrix{1, 0, 0, 0, 1.01F, 0, 0, 0, 1},  // stretched
                                 Matrix{1, 0.01F, 0, 0, 1, 0, 0, 0, 1}}) // sheared
    {
        EXPECT_EQ(CalibrationCheck::NoRotation, Check(CalibrationBytesWith(kRotation, matrix)));
    }
    EXPECT_EQ(CalibrationCheck::Good, Check(CalibrationBytesWith(kRotation, Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1})));
}

CalibrationTable GoodTable()
{
    CalibrationTable table;
    EXPECT_EQ(CalibrationCheck::Good, ParseCalibrationTable(GoodCalibrationBytes(), table));
    return table;
}

TEST(CameraModelTest, AFrameWithoutPixelsHasNoModel)
{
    EXPECT_EQ(0, ScalePinhole(GoodTable(), 0, 480).focalLengthX);
    EXPECT_EQ(0, ScalePinhole(GoodTable(), 640, 0).focalLengthY);
    EXPECT_EQ(0, FrameGeometry(640, 480).Crop(0, 0, 0, 480).PinholeOf(GoodTable()).focalLengthX);
}

TEST(CameraModelTest, CropsAndScalingsOfAChainAddUp)
{
    // 1280 x 720 shows rows 60 to 420 of the sensor twice as large. Columns 101 to 700 and rows 51 to 350 of it, five
    // sixths as large, without 20 columns and 30 rows more: sensor column 101 / 2 + 20 / (2 * 5 / 6) = 62.5 on, row
    // 60 + 51 / 2 + 30 / (5 / 3) = 103.5 on, at a scale of 5 / 3.
    const FrameGeometry chain = FrameGeometry(1280, 720).Crop(101, 51, 600, 300).Scale(500, 250).Crop(20, 30, 460, 200);
    const PinholeModel model = chain.PinholeOf(GoodTable());

    EXPECT_EQ(460u, chain.Width());
    EXPECT_EQ(200u, chain.Height());
    EXPECT_NEAR(474.5 * 5 / 3, model.focalLengthX, 1e-9);
    EXPECT_NEAR(475.25 * 5 / 3, model.focalLengthY, 1e-9);
    EXPECT_NEAR((322.25 - 62.5) * 5 / 3 - 0.5, model.principalPointX, 1e-9);
    EXPECT_NEAR((239.0 - 103.5) * 5 / 3 - 0.5, model.principalPointY, 1e-9);

    // An odd rest stays at the bottom and right, as the cropping nodes leave it.
    const PinholeModel odd = FrameGeometry(640, 480).CropCentre(433, 415).PinholeOf(GoodTable());
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
    const Quaternion q = QuaternionOf(RotationAbout(axis, angle));

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
