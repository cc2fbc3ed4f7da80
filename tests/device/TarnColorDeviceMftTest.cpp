#include "device/TarnColorDeviceMft.h"

#include "device/nodes/TarnColorPrivacyTopologyNode.h"
#include "sim/CameraIdentifiers.h"
#include "sim/GeneratedScene.h"
#include "tarn/firmware_errors.h"
#include "tarn/tarn_dmft.h"
#include "tests/core/TestParts.h"
#include "tests/support/TestFrameServer.h"
#include "tests/trace/TraceLines.h"
#include "tools/frameserver/SampleDetails.h"

using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

class TarnColorDeviceMftTest : public testing::Test
{
  protected:
    static tarn_sim::CameraConfiguration SteppedTarnColor(bool hasExtensionUnit)
    {
        auto configuration = tarn_sim::CameraConfiguration::TarnColor();
        configuration.pacing = tarn_sim::Pacing::Stepped;
        if (!hasExtensionUnit)
        {
            configuration.extensionUnitNode.reset();
        }
        return configuration;
    }
    struct Server : TestFrameServer
    {
        explicit Server(bool hasExtensionUnit = true)
            : TestFrameServer(MakeCom<mft_core::TarnColorDeviceMft>(),
                              MakeCom<tarn_sim::SimulatedCamera>(SteppedTarnColor(hasExtensionUnit)))
        {
            EXPECT_HR(S_OK, initialized);
        }
    };
};

TEST_F(TarnColorDeviceMftTest, FramesAndFormatsAreUntouchedAndCarryTheirRecords)
{
    Server server;
    EXPECT_EQ("YUY2 640x480@30", tarn_host::FrameFormat::Of(*server.OutputType(0).Get()).ToText());
    ComPtr<IMFAttributes> attributes;
    ASSERT_HR(S_OK, server.transform->GetOutputStreamAttributes(0, &attributes));
    EXPECT_EQ(4u + 3 * sizeof(MFPinholeCameraIntrinsic_IntrinsicModel), // 640, 1280 and 1920 wide
              BlobOf(attributes, MFStreamExtension_PinholeCameraIntrinsics).size());

    ASSERT_HR(S_OK, server.Start(0, 2)); // 1280 x 720
    const auto sample = server.StepAndCollect(0, 2).at(1);
    Bytes picture(std::size_t{1280} * 720 * 2);
    tarn_sim::GeneratedScene().Render({1, 1280, 720, true}, tarn_sim::Plane::Yuy2, picture.data());
    EXPECT_TRUE(picture == BytesOf(sample));
    const auto details = tarn_host::SampleDetails::Of(*sample.Get());
    EXPECT_EQ(1u, details.record.value_or(TARN_FRAME_METADATA{}).frameCounter);
    ASSERT_EQ(1u, details.intrinsics.size());
    EXPECT_EQ(1280u, details.intrinsics[0].Width);
    EXPECT_FLOAT_EQ(357.5F, details.intrinsics[0].CameraModel.PrincipalPoint.y);
    ASSERT_EQ(1u, details.extrinsics.size());
    EXPECT_TRUE(IsEqualGUID(TARN_EXTRINSICS, details.extrinsics[0].CalibrationId)) << "one rig with depth";
    EXPECT_EQ(0.0F, details.extrinsics[0].Position.x);
    EXPECT_EQ(1.0F, details.extrinsics[0].Orientation.w);
}

TEST_F(TarnColorDeviceMftTest, APrivateFrameIsBlackByItsFormatAndACompressedOneIsDropped)
{
    const auto privacy = std::make_shared<mft_core::FramePrivacy>("Test");
    privacy->Tell(true);
    const auto blankedIn = [&](const GUID &subtype, std::size_t bytesInFirst, std::size_t bytesInSecond) {
        const auto end = std::make_shared<RecordingNode>();
        const auto type = MakeType(5, 2, 30, subtype); // odd: no chroma pair ends a row of luma
        const auto sample = MakeSample(0, Bytes(bytesInFirst));
        EXPECT_HR(S_OK, sample->AddBuffer(MakeBuffer(Bytes(bytesInSecond)).Get()));
        mft_core::TarnColorPrivacyTopologyNode(end, privacy, type.Get()).Process(sample.Get());
        return end->Times().empty() ? Bytes{} : BytesOf(sample);
    };
    EXPECT_EQ((Bytes{16, 128, 16, 128, 16, 128}), blankedIn(MFVideoFormat_YUY2, 4, 2));
    Bytes planes(10, 16);
    planes.insert(planes.end(), 6, 128);
    EXPECT_EQ(planes, blankedIn(MFVideoFormat_NV12, 7, 9)); // luma ends in the second buffer
    EXPECT_EQ(Bytes(30), blankedIn(MFVideoFormat_RGB24, 15, 15));
    EXPECT_TRUE(blankedIn(MFVideoFormat_MJPG, 8, 8).empty());
}

TEST_F(TarnColorDeviceMftTest, NothingIsSeenWhilePrivacyIsOn)
{
    Server server;
    server.camera->Controls().privacy = true;
    tarn_sim::FaultPlan plan;
    plan.metadata = tarn_sim::MetadataFault::Absent; // the camera itself is asked at the start
    server.camera->Faults().SetPlan(plan);
    ASSERT_HR(S_OK, server.Start(0));
    const Bytes pixels = BytesOf(server.StepAndCollect(0, 1).at(0));
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        ASSERT_EQ(i % 2 == 0 ? 16 : 128, pixels[i]) << i;
    }
}

TEST_F(TarnColorDeviceMftTest, ItsExtensionUnitTakesPropertiesTellsErrorsAndMayBeMissing)
{
    const TraceLines trace;
    Server server;
    BYTE value = 42;
    // No node is named by the application: the transform adds it.
    EXPECT_HR(S_OK, server.SendProperty(KSPROPERTYSETID_TARN_COLOR_CONTROL, tarn_sim::kControlExposureGranularity,
                                        KSPROPERTY_TYPE_SET, &value, sizeof(value)));
    EXPECT_EQ(42, server.camera->Controls().ValueOf(tarn_sim::kControlExposureGranularity));
    ASSERT_HR(S_OK, server.Start(0));
    server.camera->Controls().SetErrorCode(TARN_FIRMWARE_ERROR_USB_BANDWIDTH);
    EXPECT_EQ(1u, server.camera->Ks().SignalAutoUpdate());
    EXPECT_TRUE(WaitUntil([&] { return trace.Contains("firmware error: USB bandwidth (7)"); }));

    Server without(false);
    ASSERT_HR(S_OK, without.Start(0));
    EXPECT_EQ(1u, without.StepAndCollect(0, 1).size());
}

} // namespace
