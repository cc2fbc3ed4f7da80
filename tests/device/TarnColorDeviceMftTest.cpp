#include "device/TarnColorDeviceMft.h"

#include "platform/CameraAttributes.h"

#include "sim/CameraIdentifiers.h"
#include "device/nodes/TarnColorPrivacyTopologyNode.h"
#include "sim/GeneratedScene.h"
#include "tarn/firmware_errors.h"
#include "tarn/frame_metadata.h"
#include "tarn/sample_attributes.h"
#include "tarn/tarn_dmft.h"
#include "tests/core/TestParts.h"
#include "tests/device/DepthCamera.h"
#include "tests/device/DepthFrameServer.h"

using tarn_sim::CameraConfiguration;
using tarn_sim::SimulatedCamera;
using tarn_test::TestFrameServer;
using user_space_frameworks::MakeCom;

namespace
{

ComPtr<SimulatedCamera> ColorCamera()
{
    auto configuration = CameraConfiguration::TarnColor();
    configuration.pacing = tarn_sim::Pacing::Stepped;
    return MakeCom<SimulatedCamera>(configuration);
}

TEST(TarnColorDeviceMftTest, FramesAndFormatsAreUntouchedAndCarryTheirRecords)
{
    TestFrameServer server(MakeCom<mft_core::TarnColorDeviceMft>(), ColorCamera());
    ASSERT_HR(S_OK, server.initialized);
    GUID subtype{};
    EXPECT_HR(S_OK, server.OutputType(0)->GetGUID(MF_MT_SUBTYPE, &subtype));
    EXPECT_TRUE(IsEqualGUID(MFVideoFormat_YUY2, subtype));
    ComPtr<IMFAttributes> attributes;
    ASSERT_HR(S_OK, server.transform->GetOutputStreamAttributes(0, &attributes));
    UINT32 size = 0;
    EXPECT_HR(S_OK, attributes->GetBlobSize(MFStreamExtension_PinholeCameraIntrinsics, &size));
    EXPECT_EQ(4u + 3 * sizeof(MFPinholeCameraIntrinsic_IntrinsicModel), size); // 640, 1280 and 1920 wide

    ASSERT_HR(S_OK, server.Start(0, 2)); // 1280 x 720
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 2));
    const auto samples = server.CollectAll(0);
    ASSERT_EQ(2u, samples.size());
    std::vector<BYTE> picture(std::size_t{1280} * 720 * 2);
    tarn_sim::GeneratedScene().Render({1, 1280, 720, true}, tarn_sim::Plane::Yuy2, picture.data());
    EXPECT_TRUE(picture == tarn_test::PixelsOf(samples[1]));
    TARN_FRAME_METADATA record{};
    EXPECT_TRUE(tarn_test::HasBlob(samples[1], TARN_SAMPLE_FRAME_METADATA, record));
    EXPECT_EQ(1u, record.frameCounter);
    MFPinholeCameraIntrinsics intrinsics{};
    ASSERT_TRUE(tarn_test::HasBlob(samples[1], MFSampleExtension_PinholeCameraIntrinsics, intrinsics));
    EXPECT_EQ(1u, intrinsics.IntrinsicModelCount);
    EXPECT_EQ(1280u, intrinsics.IntrinsicModels[0].Width);
    EXPECT_FLOAT_EQ(357.5F, intrinsics.IntrinsicModels[0].CameraModel.PrincipalPoint.y);
    MFCameraExtrinsics extrinsics{};
    ASSERT_TRUE(tarn_test::HasBlob(samples[1], MFSampleExtension_CameraExtrinsics, extrinsics));
    EXPECT_TRUE(IsEqualGUID(TARN_EXTRINSICS, extrinsics.CalibratedTransforms[0].CalibrationId)) << "one rig with depth";
    EXPECT_EQ(0.0F, extrinsics.CalibratedTransforms[0].Position.x);
    EXPECT_EQ(1.0F, extrinsics.CalibratedTransforms[0].Orientation.w);
}

TEST(TarnColorDeviceMftTest, APrivateFrameIsBlackByItsFormatAndACompressedOneIsDropped)
{
    constexpr UINT32 kWidth = 5; // odd: no chroma pair ends a row of luma
    constexpr UINT32 kHeight = 2;
    const auto privacy = std::make_shared<mft_core::FramePrivacy>("Test");
    privacy->Tell(true);
    const auto blankedIn = [&](const GUID &subtype, DWORD bytesInFirst, DWORD bytesInSecond) {
        const auto end = std::make_shared<tarn_test::RecordingNode>();
        const auto type = tarn_test::MakeType(kWidth, kHeight, 30, subtype);
        const ComPtr<IMFSample> sample = tarn_test::MakeSample(0);
        for (const DWORD bytes : {bytesInFirst, bytesInSecond})
        {
            ComPtr<IMFMediaBuffer> buffer;
            EXPECT_HR(S_OK, MFCreateMemoryBuffer(bytes, &buffer));
            EXPECT_HR(S_OK, buffer->SetCurrentLength(bytes));
            EXPECT_HR(S_OK, sample->AddBuffer(buffer.Get()));
        }
        mft_core::TarnColorPrivacyTopologyNode(end, privacy, type.Get()).Process(sample.Get());
        return end->Times().empty() ? std::vector<BYTE>{} : tarn_test::PixelsOf(sample);
    };
    EXPECT_EQ((std::vector<BYTE>{16, 128, 16, 128, 16, 128}), blankedIn(MFVideoFormat_YUY2, 4, 2));
    std::vector<BYTE> planes(10, 16);
    planes.insert(planes.end(), 6, 128);
    EXPECT_EQ(planes, blankedIn(MFVideoFormat_NV12, 7, 9)); // luma ends in the second buffer
    EXPECT_EQ(std::vector<BYTE>(30), blankedIn(MFVideoFormat_RGB24, 15, 15));
    EXPECT_TRUE(blankedIn(MFVideoFormat_MJPG, 8, 8).empty());
}

TEST(TarnColorDeviceMftTest, NothingIsSeenWhilePrivacyIsOn)
{
    TestFrameServer server(MakeCom<mft_core::TarnColorDeviceMft>(), ColorCamera());
    server.camera->Controls().privacy = true;
    tarn_sim::FaultPlan plan;
    plan.metadata = tarn_sim::MetadataFault::Absent; // the camera itself is asked at the start
    server.camera->Faults().SetPlan(plan);
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    const auto samples = server.CollectAll(0);
    ASSERT_EQ(1u, samples.size());
    const std::vector<BYTE> pixels = tarn_test::PixelsOf(samples[0]);
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        ASSERT_EQ(i % 2 == 0 ? 16 : 128, pixels[i]) << i;
    }
}

TEST(TarnColorDeviceMftTest, AFirmwareErrorIsTracedWhenTheCameraSignalsIt)
{
    const tarn_test::TraceText trace;
    TestFrameServer server(MakeCom<mft_core::TarnColorDeviceMft>(), ColorCamera());
    ASSERT_HR(S_OK, server.Start(0));
    server.camera->Controls().SetErrorCode(TARN_FIRMWARE_ERROR_USB_BANDWIDTH);
    EXPECT_EQ(1u, server.camera->Ks().SignalAutoUpdate());
    EXPECT_TRUE(tarn_test::WaitUntil([&] { return trace.Contains("firmware error: USB bandwidth (7)"); }));
}

TEST(TarnColorDeviceMftTest, PropertiesOfTheColorUnitReachTheUnit)
{
    TestFrameServer server(MakeCom<mft_core::TarnColorDeviceMft>(), ColorCamera());
    ASSERT_HR(S_OK, server.initialized);
    ComPtr<IKsControl> control;
    ASSERT_HR(S_OK, server.transform.As(&control));
    KSPROPERTY property{};
    property.Set = KSPROPERTYSETID_TARN_COLOR_CONTROL;
    property.Id = tarn_sim::kControlExposureGranularity;
    property.Flags = KSPROPERTY_TYPE_SET;
    BYTE value = 42;
    ULONG returned = 0;

    // No node is named by the application: the transform adds it.
    EXPECT_HR(S_OK, control->KsProperty(&property, sizeof(property), &value, sizeof(value), &returned));

    EXPECT_EQ(42, server.camera->Controls().ValueOf(tarn_sim::kControlExposureGranularity));
}

TEST(TarnColorDeviceMftTest, ACameraWithoutItsExtensionUnitStreams)
{
    auto configuration = CameraConfiguration::TarnColor();
    configuration.pacing = tarn_sim::Pacing::Stepped;
    configuration.extensionUnitNode.reset();
    TestFrameServer server(MakeCom<mft_core::TarnColorDeviceMft>(), MakeCom<SimulatedCamera>(configuration));
    ASSERT_HR(S_OK, server.initialized);
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    EXPECT_EQ(1u, server.CollectAll(0).size());
}

} // namespace
