// When frames come, and when they do not.
#include "sim/CapturePump.h"

#include "tests/sim/SimCase.h"

using namespace tarn_sim;

namespace
{

// A small camera and who takes its frames.
class PacingTest : public testing::Test
{
  protected:
    void Make(
        Pacing pacing, const std::function<void(CameraConfiguration &)> &change = [](auto &) {}, UINT32 fps = 60)
    {
        auto configuration = CameraConfiguration::GenericDepth16(32, 24, fps);
        change(configuration);
        camera = MakeCamera(configuration, pacing);
        camera->Pins().SetFrameSink(&sink);
        type = MakeVideoType(MFVideoFormat_D16, 32, 24, fps);
    }
    ~PacingTest() override { camera->Pins().StopAll(); }
    HRESULT Set(DeviceStreamState state, IMFMediaType *wanted, DWORD pin = 0)
    {
        return camera->Pins().SetPinState(pin, state, wanted);
    }
    PinStatistics Statistics(DWORD pin = 0) { return camera->Pins().Statistics(pin); }

    TestSink sink;
    ComPtr<SimulatedCamera> camera;
    ComPtr<IMFMediaType> type;
};

TEST_F(PacingTest, SteppedDeliversWhatIsAskedForAndTimeGoesOnAcrossTypes)
{
    Make(Pacing::Stepped);
    EXPECT_HR(E_UNEXPECTED, camera->Pins().Step(0, 1)); // not running
    ASSERT_HR(S_OK, Set(DeviceStreamState_Run, type.Get()));
    EXPECT_HR(S_OK, camera->Pins().Step(0, 5, kLongEnough));
    EXPECT_EQ(5U, sink.frames);
    EXPECT_HR(S_OK, Set(DeviceStreamState_Pause, nullptr));
    EXPECT_HR(E_UNEXPECTED, camera->Pins().Step(0, 1));
    EXPECT_HR(S_OK, Set(DeviceStreamState_Run, nullptr)); // the type it has
    EXPECT_HR(S_OK, camera->Pins().Step(0, 1, kLongEnough));
    ASSERT_HR(S_OK, Set(DeviceStreamState_Run, MakeVideoType(MFVideoFormat_L16, 32, 24, 60).Get()));
    EXPECT_HR(S_OK, camera->Pins().Step(0, 1, kLongEnough));

    const auto samples = sink.Take();
    ASSERT_EQ(7U, samples.size());
    EXPECT_EQ(tarn_test::TimeOf(samples[5]) + 166666, tarn_test::TimeOf(samples[6]));
    EXPECT_EQ(6U, RecordOf(samples[6].Get())->frameCounter);
    EXPECT_EQ(MFVideoFormat_L16.Data1, RecordOf(samples[6].Get())->formatFourCc);
}

TEST_F(PacingTest, AsFastAsTakenLosesNothingAndWaitsForBuffers)
{
    Make(Pacing::AsFastAsTaken, [](auto &configuration) {
        configuration.buffersPerPin = 3;
        configuration.frameLimit = 200;
    });
    ASSERT_HR(S_OK, Set(DeviceStreamState_Run, type.Get()));
    ASSERT_HR(S_OK, camera->Pins().WaitForFrames(0, 3, kLongEnough));
    EXPECT_HR(HRESULT_FROM_WIN32(WAIT_TIMEOUT), camera->Pins().WaitForFrames(0, 4, std::chrono::milliseconds(50)));
    EXPECT_EQ(3U, Statistics().outstanding);
    for (std::uint64_t next = 0; next < 200;)
    {
        for (const auto &sample : sink.Take())
        {
            ASSERT_EQ(next++, RecordOf(sample.Get()).value().frameCounter);
        }
    }
    EXPECT_HR(S_OK, camera->Pins().WaitForFrames(0, 200, kLongEnough)); // a frame counts when the sink has returned
    EXPECT_HR(S_OK, camera->Pins().WaitForReturnOfFrames(kLongEnough));
    EXPECT_EQ(200U, Statistics().delivered);
    EXPECT_EQ(0U, Statistics().dropped);
}

TEST_F(PacingTest, RealTimeKeepsTheRateAndDropsWhenBuffersRunOut)
{
    Make(
        Pacing::RealTime, [](auto &configuration) { configuration.buffersPerPin = 2; }, 100);
    sink.keep = false;
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_HR(S_OK, Set(DeviceStreamState_Run, type.Get()));
    ASSERT_HR(S_OK, camera->Pins().WaitForFrames(0, 21, kLongEnough));
    // Frame 21 is due 200 ms after the first; it can be late on a busy machine, never early.
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(195));

    sink.keep = true;
    const auto droppedBefore = Statistics().dropped;
    EXPECT_TRUE(tarn_test::WaitUntil([&] { return Statistics().dropped >= droppedBefore + 3; }));
    EXPECT_EQ(2U, Statistics().outstanding);
    camera->Pins().StopAll();
    EXPECT_EQ(2U, sink.Take().size());
}

TEST_F(PacingTest, OnePinStopsWhileTheOtherDelivers)
{
    const auto other = MakeVideoType(MFVideoFormat_YUY2, 16, 16, 30);
    Make(Pacing::AsFastAsTaken, [&](auto &configuration) {
        configuration.pins.push_back({1, {other}, MFFrameSourceTypes_Color});
    });
    sink.keep = false;
    ASSERT_HR(S_OK, Set(DeviceStreamState_Run, type.Get()));
    ASSERT_HR(S_OK, Set(DeviceStreamState_Run, other.Get(), 1));
    EXPECT_HR(S_OK, camera->Pins().WaitForFrames(0, 50, kLongEnough));
    // The stop must not wait for a gap between the other pin's frames.
    EXPECT_HR(S_OK, Set(DeviceStreamState_Stop, nullptr));
    const auto stoppedAt = Statistics().delivered;
    EXPECT_HR(S_OK, camera->Pins().WaitForFrames(1, Statistics(1).delivered + 50, kLongEnough));
    EXPECT_EQ(stoppedAt, Statistics().delivered);
}

} // namespace
