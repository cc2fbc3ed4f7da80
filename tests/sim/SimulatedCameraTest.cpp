// What the simulated filter tells of its streams, how it stops, and what its faults do.
#include "sim/SimulatedCamera.h"

#include "sim/FaultPlan.h"
#include "tests/sim/SimCase.h"
#include "tests/support/HandleCount.h"

using namespace tarn_test;

using namespace tarn_sim;

namespace
{

TEST(SimulatedCameraTest, AnOfferedTypeIsTheCallersOwn)
{
    const auto camera = MakeCamera(CameraConfiguration::GenericDepth16(64, 48, 30));
    ComPtr<IMFMediaType> changed;
    ComPtr<IMFMediaType> offered;
    DWORD same = 0;
    ASSERT_HR(S_OK, camera->MFTGetOutputAvailableType(0, 0, &changed));
    ASSERT_HR(S_OK, MFSetAttributeSize(changed.Get(), MF_MT_FRAME_SIZE, 1, 1));
    EXPECT_HR(MF_E_INVALIDTYPE, camera->Pins().SetPinState(0, DeviceStreamState_Run, changed.Get()));
    ASSERT_HR(S_OK, camera->MFTGetOutputAvailableType(0, 0, &offered));
    EXPECT_HR(S_FALSE, offered->IsEqual(changed.Get(), &same));
}

TEST(SimulatedCameraTest, StartsAndStopsWithFramesInFlight)
{
    const auto type = MakeVideoType(MFVideoFormat_D16, 32, 24, 60);
    int handlesBefore = 0;
    const auto camera = MakeCamera(CameraConfiguration::GenericDepth16(32, 24, 60), Pacing::AsFastAsTaken);
    std::atomic<bool> stopped{false};
    std::atomic<int> late{0};
    TestSink sink;
    sink.keep = false;
    sink.onFrame = [&] { late += stopped ? 1 : 0; };
    camera->Pins().SetFrameSink(&sink);

    for (int round = 0; round < 300; ++round)
    {
        if (round == 20)
        {
            handlesBefore = CountHandles();
        }
        stopped = false;
        const auto wanted = sink.frames + 3;
        ASSERT_HR(S_OK, camera->Pins().SetPinState(0, DeviceStreamState_Run, type.Get()));
        ASSERT_HR(S_OK, camera->Pins().WaitForFrames(0, wanted, kLongEnough));
        if (round % 3 == 0)
        {
            camera->Pins().StopAll();
        }
        ASSERT_HR(S_OK, camera->Pins().SetPinState(0, DeviceStreamState_Stop, nullptr));
        stopped = true;
    }
    camera->Pins().SetFrameSink(nullptr);
    camera->Pins().StopAll();

    EXPECT_EQ(0, late);
    EXPECT_LE(CountHandles(), handlesBefore);
    EXPECT_HR(S_OK, camera->Pins().WaitForReturnOfFrames(kLongEnough));
    EXPECT_REFS(camera, 1);
}

// The sink may be the last to hold the camera, and may hold frames longer than the camera lives.
TEST(SimulatedCameraTest, MayBeReleasedByItsOwnCaptureThread)
{
    static TestSink sink; // the capture thread leaves it after the test has seen what it waits for
    static std::atomic<bool> handedOver{false};
    static std::atomic<bool> released{false};
    static ComPtr<SimulatedCamera> last;
    handedOver = false;
    released = false;
    sink.Take();
    last = MakeCamera(CameraConfiguration::GenericDepth16(32, 24, 60), Pacing::AsFastAsTaken);
    sink.onFrame = [] {
        if (WaitUntil([] { return handedOver.load(); }))
        {
            last.Reset();
            released = true;
        }
    };
    last->Pins().SetFrameSink(&sink);
    ASSERT_HR(S_OK,
              last->Pins().SetPinState(0, DeviceStreamState_Run, MakeVideoType(MFVideoFormat_D16, 32, 24, 60).Get()));
    handedOver = true;

    ASSERT_TRUE(WaitUntil([] { return released.load(); }));
    const auto samples = sink.Take();
    ASSERT_EQ(1U, samples.size());
    EXPECT_EQ(32U * 24 * 2, BytesOf(samples.front()).size());
}

class FaultPlanTest : public testing::Test
{
  protected:
    ComPtr<SimulatedCamera> camera = MakeCamera(CameraConfiguration::TarnDepth());
    ComPtr<IMFMediaType> type = MakeVideoType(CUSTOM_GUID_KELP_Z, 320, 240, 30);
};

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
    EXPECT_EQ(320U * 240 * 2, BytesOf(samples[0]).size());
    EXPECT_EQ(320U * 240, BytesOf(samples[1]).size());
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
