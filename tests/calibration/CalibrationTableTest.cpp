#include "device/calibration/CalibrationTable.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/calibration/CalibrationBytes.h"

using mft_core::CalibrationCheck;
using mft_core::CalibrationTable;
using tarn_test::CalibrationBytesWith;
using tarn_test::GoodCalibrationBytes;

namespace
{

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
    EXPECT_EQ((mft_core::RotationMatrix{0, 0, 1, 1, 0, 0, 0, 1, 0}), table.rotation);
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

} // namespace
