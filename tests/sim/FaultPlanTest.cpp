// Each switch of the fault plan does what it says, once, and leaves the camera working.
#include "sim/FaultPlan.h"

#include "tests/sim/SimCase.h"

namespace tarn_sim
{
namespace
{

class FaultPlanTest : public testing::Test
{
  protected:
    ComPtr<SimulatedCamera> camera = MakeCamera(CameraConfiguration::TarnDepth());
    ComPtr<IMFMediaType> type = MakeVideoType(CUSTOM_GUID_KELP_Z, 320, 240, 30);

    HRESULT LaserPower()
    {
        std::uint8_t value = 0;
        return NodeProperty(*camera.Get(), KSPROPERTYSETID_TARN_DEPTH_CONTROL, kControlLaserPower, KSPROPERTY_TYPE_GET,
                            &value, 1, nullptr);
    }
};

TEST_F(FaultPlanTest, TheNthCallFailsOrIsSlow)
{
    FaultPlan plan;
    plan.ksCall = {2, E_ABORT};
    plan.transformCall = {1, E_OUTOFMEMORY, true};
    plan.topologyCall = {2, E_ACCESSDENIED};
    plan.ksDelay = std::chrono::milliseconds(60);
    plan.ksDelayedCall = 3;
    camera->Faults().SetPlan(plan);
    DWORD inputs = 0;
    DWORD outputs = 0;

    EXPECT_HR(S_OK, LaserPower());
    EXPECT_HR(E_ABORT, LaserPower());
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_HR(S_OK, LaserPower());
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(59));
    EXPECT_HR(E_OUTOFMEMORY, camera->MFTGetStreamCount(&inputs, &outputs));
    EXPECT_HR(E_OUTOFMEMORY, camera->MFTProcessMessage(MFT_MESSAGE_COMMAND_FLUSH, 0));
    EXPECT_HR(S_OK, camera->get_NumNodes(&inputs));
    EXPECT_HR(E_ACCESSDENIED, camera->get_NumNodes(&inputs));

    camera->Faults().SetPlan({});
    EXPECT_HR(S_OK, camera->MFTGetStreamCount(&inputs, &outputs));
    EXPECT_HR(E_ABORT, camera->Ks().Traffic().at(1).result);
}

TEST_F(FaultPlanTest, FramesComeShortTwiceAndLate)
{
    FaultPlan plan;
    plan.shortEvery = 2;
    plan.duplicateEvery = 3;
    plan.frameAfterStop = true;
    camera->Faults().SetPlan(plan);
    TestSink sink;
    camera->Pins().SetFrameSink(&sink);
    EXPECT_HR(S_OK, camera->Pins().SetPinState(0, DeviceStreamState_Run, type.Get()));
    EXPECT_HR(S_OK, camera->Pins().Step(0, 3, kLongEnough));

    const auto samples = sink.Take();
    ASSERT_EQ(4U, samples.size());
    EXPECT_EQ(320U * 240 * 2, BytesOf(samples[0].Get()).size());
    EXPECT_EQ(320U * 240, BytesOf(samples[1].Get()).size());
    EXPECT_EQ(samples[2].Get(), samples[3].Get());

    EXPECT_HR(S_OK, camera->Pins().SetPinState(0, DeviceStreamState_Stop, nullptr));
    EXPECT_HR(S_OK, camera->Pins().WaitForFrames(0, 5, kLongEnough));
    EXPECT_EQ(1U, sink.Take().size());
    camera->Pins().StopAll();
}

TEST_F(FaultPlanTest, MetadataIsBrokenInEachWay)
{
    FaultPlan plan;
    for (const auto fault : {MetadataFault::Absent, MetadataFault::NoItems, MetadataFault::Truncated,
                             MetadataFault::ZeroSizedItem, MetadataFault::HugeItem, MetadataFault::ShortPayload})
    {
        plan.metadata = fault;
        camera->Faults().SetPlan(plan);
        const auto samples = Capture(*camera.Get(), type.Get(), 1);
        ASSERT_EQ(1U, samples.size());
        EXPECT_FALSE(RecordOf(samples[0].Get()).has_value());
        const bool hasItems = fault != MetadataFault::Absent && fault != MetadataFault::NoItems;
        EXPECT_EQ(hasItems, !MetadataItems(samples[0].Get()).empty());
    }
    camera->Pins().StopAll();
}

// A source that fails must not stop the camera.
class FailingSource : public IFrameSource
{
  public:
    void Render(const FrameRequest &request, Plane, std::uint8_t *) override
    {
        if (request.number % 2 == 0)
        {
            throw std::runtime_error("no picture");
        }
    }
};

TEST(FailingSourceTest, CostsOnlyItsOwnFrames)
{
    auto configuration = CameraConfiguration::GenericDepth16(32, 24, 60);
    configuration.frameSource = std::make_shared<FailingSource>();
    const auto camera = MakeCamera(configuration);

    EXPECT_EQ(3U, Capture(*camera.Get(), MakeVideoType(MFVideoFormat_D16, 32, 24, 60).Get(), 6).size());

    EXPECT_EQ(3U, camera->Pins().Statistics(0).failed);
    EXPECT_EQ(0U, camera->Pins().Statistics(0).outstanding);
    camera->Pins().StopAll();
}

} // namespace
} // namespace tarn_sim
