// What the transform makes of the camera's table beyond the model of each frame.
#include "device/calibration/TarnCalibration.h"

#include "platform/CameraAttributes.h"

#include "tarn/calibration_table.h"
#include "tests/device/DepthCamera.h"

using namespace mft_core;
using namespace tarn_sim;
using namespace tarn_test;

namespace
{

std::unique_ptr<TarnCalibration> Calibration(const DepthCamera &device)
{
    auto calibration = std::make_unique<TarnCalibration>(device.unit.Get(), KSPROPERTYSETID_TARN_DEPTH_CONTROL,
                                                         TARN_CALIBRATION_CONTROL, "Test");
    EXPECT_HR(S_OK, calibration->Init());
    return calibration;
}

TEST(TarnCalibrationTest, ExtrinsicsTurnByOneDegreeAboutYAndAreInMetres)
{
    const DepthCamera device;
    const CameraBlob blob = Calibration(device)->CreateExtrinsics(CameraPose::Depth);
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

TEST(TarnCalibrationTest, WithoutAUsableTableOrSizeThereAreNoRecords)
{
    const MediaTypeList types{MakeVideoType(MFVideoFormat_D16, 640, 480, 30)};
    const auto table = CameraConfiguration::TarnDepth().calibrationTable;
    auto spoilt = table;
    spoilt[20] ^= 1;
    auto tooLong = table;
    tooLong.resize(2000); // longer than a control's answer can be
    for (const auto &bytes : {std::vector<std::uint8_t>{}, {table.begin(), table.begin() + 100}, tooLong, spoilt})
    {
        auto configuration = CameraConfiguration::TarnDepth();
        configuration.calibrationTable = bytes;
        const TraceLines trace;
        const DepthCamera device(configuration);
        const auto calibration = Calibration(device);
        EXPECT_EQ(nullptr, calibration->CreateIntrinsics(types).data);
        EXPECT_EQ(nullptr, calibration->CreateExtrinsics(CameraPose::Origin).data);
        EXPECT_TRUE(trace.Contains("no table"));
    }
    ComPtr<IMFMediaType> sizeless;
    ASSERT_HR(S_OK, MFCreateMediaType(&sizeless));
    const DepthCamera device;
    EXPECT_EQ(nullptr, Calibration(device)->CreateIntrinsics({sizeless, nullptr}).data);
    EXPECT_EQ(nullptr, Calibration(device)->CreateIntrinsics({}).data);
}

} // namespace
