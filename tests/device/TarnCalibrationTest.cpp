#include "device/calibration/TarnCalibration.h"

#include "platform/CameraAttributes.h"

#include <cstring>

#include "tarn/calibration_table.h"
#include "tests/device/DepthCamera.h"

using mft_core::CameraBlob;
using mft_core::CameraPose;
using mft_core::TarnCalibration;
using tarn_sim::CameraConfiguration;
using tarn_sim::MakeVideoType;
using tarn_test::DepthCamera;
using tarn_test::TraceLines;

namespace
{

TarnCalibration Calibration(const DepthCamera &device)
{
    return {device.unit.Get(), KSPROPERTYSETID_TARN_DEPTH_CONTROL, TARN_CALIBRATION_CONTROL, "Test"};
}

const mft_core::MediaTypeList &Types()
{
    static const mft_core::MediaTypeList types{MakeVideoType(MFVideoFormat_D16, 640, 480, 30),
                                               MakeVideoType(MFVideoFormat_D16, 1280, 720, 30),
                                               MakeVideoType(MFVideoFormat_D16, 640, 480, 60)};
    return types;
}

TEST(TarnCalibrationTest, IntrinsicsHoldOneModelPerFrameSize)
{
    const DepthCamera device;
    TarnCalibration calibration = Calibration(device);
    ASSERT_HR(S_OK, calibration.Init());

    const CameraBlob blob = calibration.CreateIntrinsics(Types());

    ASSERT_EQ(4u + 2 * sizeof(MFPinholeCameraIntrinsic_IntrinsicModel), blob.sizeBytes);
    UINT32 count = 0;
    MFPinholeCameraIntrinsic_IntrinsicModel models[2];
    std::memcpy(&count, blob.data.get(), sizeof(count));
    std::memcpy(models, blob.data.get() + sizeof(count), sizeof(models));
    EXPECT_EQ(2u, count);
    EXPECT_EQ(640u, models[0].Width);
    EXPECT_EQ(480u, models[0].Height);
    EXPECT_FLOAT_EQ(474.5F, models[0].CameraModel.FocalLength.x);
    EXPECT_FLOAT_EQ(238.5F, models[0].CameraModel.PrincipalPoint.y);
    EXPECT_EQ(1280u, models[1].Width);
    EXPECT_EQ(720u, models[1].Height);
    EXPECT_FLOAT_EQ(949.0F, models[1].CameraModel.FocalLength.x);
    EXPECT_FLOAT_EQ(357.5F, models[1].CameraModel.PrincipalPoint.y);
    EXPECT_FLOAT_EQ(-0.125F, models[1].DistortionModel.Radial_k1);
    EXPECT_FLOAT_EQ(-0.00025F, models[1].DistortionModel.Tangential_p2);

    ComPtr<IMFMediaType> sizeless; // gives no model
    ASSERT_HR(S_OK, MFCreateMediaType(&sizeless));
    EXPECT_EQ(nullptr, calibration.CreateIntrinsics({sizeless, nullptr}).data);
    EXPECT_EQ(nullptr, calibration.CreateIntrinsics({}).data);
}

TEST(TarnCalibrationTest, ExtrinsicsTurnByOneDegreeAboutYAndAreInMetres)
{
    const DepthCamera device;
    TarnCalibration calibration = Calibration(device);
    ASSERT_HR(S_OK, calibration.Init());

    const CameraBlob blob = calibration.CreateExtrinsics(CameraPose::Depth);

    ASSERT_EQ(sizeof(MFCameraExtrinsics), blob.sizeBytes);
    MFCameraExtrinsics extrinsics;
    std::memcpy(&extrinsics, blob.data.get(), sizeof(extrinsics));
    EXPECT_EQ(1u, extrinsics.TransformCount);
    const auto &transform = extrinsics.CalibratedTransforms[0];
    EXPECT_TRUE(IsEqualGUID(TARN_EXTRINSICS, transform.CalibrationId));
    EXPECT_FLOAT_EQ(0.025F, transform.Position.x);
    EXPECT_FLOAT_EQ(0.00025F, transform.Position.y);
    EXPECT_FLOAT_EQ(-0.0015F, transform.Position.z);
    EXPECT_NEAR(0.0, transform.Orientation.x, 1e-7);
    EXPECT_NEAR(0.0087265355, transform.Orientation.y, 1e-6); // sine of half a degree
    EXPECT_NEAR(0.0, transform.Orientation.z, 1e-7);
    EXPECT_NEAR(0.9999619231, transform.Orientation.w, 1e-6);
}

TEST(TarnCalibrationTest, ACameraWithoutAUsableTableWorksWithoutRecords)
{
    auto missing = CameraConfiguration::TarnDepth();
    missing.calibrationTable.clear();
    auto tooShort = CameraConfiguration::TarnDepth();
    tooShort.calibrationTable.resize(100);
    auto tooLong = CameraConfiguration::TarnDepth();
    tooLong.calibrationTable.resize(2000); // longer than a control's answer can be
    auto spoilt = CameraConfiguration::TarnDepth();
    spoilt.calibrationTable[20] ^= 1;
    for (const auto &configuration : {missing, tooShort, tooLong, spoilt})
    {
        const TraceLines trace;
        const DepthCamera device(configuration);
        TarnCalibration calibration = Calibration(device);

        EXPECT_HR(S_OK, calibration.Init());

        EXPECT_EQ(nullptr, calibration.CreateIntrinsics(Types()).data);
        EXPECT_EQ(nullptr, calibration.CreateExtrinsics(CameraPose::Origin).data);
        EXPECT_TRUE(trace.Contains("no table"));
    }
}

} // namespace
