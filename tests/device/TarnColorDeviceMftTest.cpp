#include "device/TarnColorDeviceMft.h"

#include "platform/CameraAttributes.h"

#include "sim/CameraIdentifiers.h"
#include "tarn/tarn_dmft.h"
#include "tests/support/TestFrameServer.h"

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

TEST(TarnColorDeviceMftTest, FramesAndFormatsAreUntouchedAndTheStreamHasIntrinsics)
{
    TestFrameServer server(MakeCom<mft_core::TarnColorDeviceMft>(), ColorCamera());
    ASSERT_HR(S_OK, server.initialized);
    GUID subtype{};
    EXPECT_HR(S_OK, server.OutputType(0)->GetGUID(MF_MT_SUBTYPE, &subtype));
    EXPECT_TRUE(IsEqualGUID(tarn_sim::kSubtypeYuy2, subtype));
    ComPtr<IMFAttributes> attributes;
    ASSERT_HR(S_OK, server.transform->GetOutputStreamAttributes(0, &attributes));
    UINT32 size = 0;
    EXPECT_HR(S_OK, attributes->GetBlobSize(MFStreamExtension_PinholeCameraIntrinsics, &size));
    EXPECT_EQ(4u + 3 * sizeof(MFPinholeCameraIntrinsic_IntrinsicModel), size); // 640, 1280 and 1920 wide

    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Step(0, 2));
    EXPECT_EQ(2u, server.CollectAll(0).size());
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

    EXPECT_EQ(42, server.camera->ControlValue(tarn_sim::kControlExposureGranularity));
}

TEST(TarnColorDeviceMftTest, ACameraWithoutItsExtensionUnitStreams)
{
    auto configuration = CameraConfiguration::TarnColor();
    configuration.pacing = tarn_sim::Pacing::Stepped;
    configuration.extensionUnitNode.reset();
    TestFrameServer server(MakeCom<mft_core::TarnColorDeviceMft>(), MakeCom<SimulatedCamera>(configuration));
    ASSERT_HR(S_OK, server.initialized);
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Step(0, 1));
    EXPECT_EQ(1u, server.CollectAll(0).size());
}

} // namespace
