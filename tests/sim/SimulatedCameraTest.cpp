// What the simulated filter tells a device transform about its streams, and how it stops.
#include "sim/SimulatedCamera.h"

#include "tests/sim/SimCase.h"
#include "tests/support/HandleCount.h"

namespace tarn_sim
{
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
    TestSink sink(false);
    sink.onFrame = [&] { late += stopped ? 1 : 0; };
    camera->Pins().SetFrameSink(&sink);

    for (int round = 0; round < 300; ++round)
    {
        if (round == 20)
        {
            handlesBefore = tarn_test::CountHandles();
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
    EXPECT_LE(tarn_test::CountHandles(), handlesBefore);
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
        if (tarn_test::WaitUntil([] { return handedOver.load(); }))
        {
            last.Reset();
            released = true;
        }
    };
    last->Pins().SetFrameSink(&sink);
    ASSERT_HR(S_OK,
              last->Pins().SetPinState(0, DeviceStreamState_Run, MakeVideoType(MFVideoFormat_D16, 32, 24, 60).Get()));
    handedOver = true;

    ASSERT_TRUE(tarn_test::WaitUntil([] { return released.load(); }));
    const auto samples = sink.Take();
    ASSERT_EQ(1U, samples.size());
    EXPECT_EQ(32U * 24 * 2, BytesOf(samples.front().Get()).size());
}

} // namespace
} // namespace tarn_sim
