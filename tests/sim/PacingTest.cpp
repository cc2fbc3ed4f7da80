// When frames come, and when they do not.
#include "sim/CapturePump.h"

#include "tests/sim/SimCase.h"

namespace tarn_sim
{
namespace
{

CameraConfiguration SmallCamera(UINT32 fps = 60)
{
    return CameraConfiguration::GenericDepth16(32, 24, fps);
}

TEST(PacingTest, SteppedDeliversWhatIsAskedForAndTimeGoesOnAcrossTypes)
{
    const auto camera = MakeCamera(SmallCamera());
    TestSink sink;
    camera->Pins().SetFrameSink(&sink);
    EXPECT_HR(E_UNEXPECTED, camera->Pins().Step(0, 1)); // not running
    ASSERT_HR(S_OK,
              camera->Pins().SetPinState(0, DeviceStreamState_Run, MakeVideoType(MFVideoFormat_D16, 32, 24, 60).Get()));
    EXPECT_HR(S_OK, camera->Pins().Step(0, 5, kLongEnough));
    EXPECT_EQ(5U, sink.frames);
    EXPECT_HR(S_OK, camera->Pins().SetPinState(0, DeviceStreamState_Pause, nullptr));
    EXPECT_HR(E_UNEXPECTED, camera->Pins().Step(0, 1));
    EXPECT_HR(S_OK, camera->Pins().SetPinState(0, DeviceStreamState_Run, nullptr)); // the type it has
    EXPECT_HR(S_OK, camera->Pins().Step(0, 1, kLongEnough));
    ASSERT_HR(S_OK,
              camera->Pins().SetPinState(0, DeviceStreamState_Run, MakeVideoType(MFVideoFormat_L16, 32, 24, 60).Get()));
    EXPECT_HR(S_OK, camera->Pins().Step(0, 1, kLongEnough));
    camera->Pins().StopAll();

    const auto samples = sink.Take();
    ASSERT_EQ(7U, samples.size());
    LONGLONG before = 0;
    LONGLONG after = 0;
    EXPECT_HR(S_OK, samples[5]->GetSampleTime(&before));
    EXPECT_HR(S_OK, samples[6]->GetSampleTime(&after));
    EXPECT_EQ(before + 166666, after);
    EXPECT_EQ(6U, RecordOf(samples[6].Get())->frameCounter);
    EXPECT_EQ(MFVideoFormat_L16.Data1, RecordOf(samples[6].Get())->formatFourCc);
}

TEST(PacingTest, AsFastAsTakenLosesNothingAndWaitsForBuffers)
{
    auto configuration = SmallCamera();
    configuration.buffersPerPin = 3;
    configuration.frameLimit = 200;
    const auto camera = MakeCamera(configuration, Pacing::AsFastAsTaken);
    TestSink sink;
    camera->Pins().SetFrameSink(&sink);
    ASSERT_HR(S_OK,
              camera->Pins().SetPinState(0, DeviceStreamState_Run, MakeVideoType(MFVideoFormat_D16, 32, 24, 60).Get()));
    ASSERT_HR(S_OK, camera->Pins().WaitForFrames(0, 3, kLongEnough));
    EXPECT_HR(HRESULT_FROM_WIN32(WAIT_TIMEOUT), camera->Pins().WaitForFrames(0, 4, std::chrono::milliseconds(50)));
    EXPECT_EQ(3U, camera->Pins().Statistics(0).outstanding);

    for (std::uint64_t next = 0; next < 200;)
    {
        for (const auto &sample : sink.Take())
        {
            const auto record = RecordOf(sample.Get());
            ASSERT_TRUE(record.has_value());
            ASSERT_EQ(next++, record->frameCounter);
        }
    }

    EXPECT_HR(S_OK, camera->Pins().WaitForFrames(0, 200, kLongEnough)); // a frame counts when the sink has returned
    EXPECT_HR(S_OK, camera->Pins().WaitForReturnOfFrames(kLongEnough));
    EXPECT_EQ(200U, camera->Pins().Statistics(0).delivered);
    EXPECT_EQ(0U, camera->Pins().Statistics(0).dropped);
    camera->Pins().StopAll();
}

TEST(PacingTest, RealTimeKeepsTheRateAndDropsWhenBuffersRunOut)
{
    auto configuration = SmallCamera(100);
    configuration.buffersPerPin = 2;
    const auto camera = MakeCamera(configuration, Pacing::RealTime);
    TestSink taking(false);
    camera->Pins().SetFrameSink(&taking);
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_HR(S_OK, camera->Pins().SetPinState(0, DeviceStreamState_Run,
                                               MakeVideoType(MFVideoFormat_D16, 32, 24, 100).Get()));

    ASSERT_HR(S_OK, camera->Pins().WaitForFrames(0, 21, kLongEnough));
    // Frame 21 is due 200 ms after the first; it can be late on a busy machine, never early.
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(195));

    TestSink keeping;
    camera->Pins().SetFrameSink(&keeping);
    const auto droppedBefore = camera->Pins().Statistics(0).dropped;
    EXPECT_TRUE(tarn_test::WaitUntil([&] { return camera->Pins().Statistics(0).dropped >= droppedBefore + 3; }));
    EXPECT_EQ(2U, camera->Pins().Statistics(0).outstanding);
    camera->Pins().StopAll();
    EXPECT_EQ(2U, keeping.Take().size());
}

TEST(PacingTest, OnePinStopsWhileTheOtherDelivers)
{
    auto configuration = SmallCamera();
    configuration.pins.push_back({1, {MakeVideoType(MFVideoFormat_YUY2, 16, 16, 30)}, MFFrameSourceTypes_Color});
    const auto camera = MakeCamera(configuration, Pacing::AsFastAsTaken);
    TestSink sink(false);
    camera->Pins().SetFrameSink(&sink);
    ASSERT_HR(S_OK,
              camera->Pins().SetPinState(0, DeviceStreamState_Run, MakeVideoType(MFVideoFormat_D16, 32, 24, 60).Get()));
    ASSERT_HR(S_OK, camera->Pins().SetPinState(1, DeviceStreamState_Run,
                                               MakeVideoType(MFVideoFormat_YUY2, 16, 16, 30).Get()));
    EXPECT_HR(S_OK, camera->Pins().WaitForFrames(0, 50, kLongEnough));

    // The stop must not wait for a gap between the other pin's frames.
    EXPECT_HR(S_OK, camera->Pins().SetPinState(0, DeviceStreamState_Stop, nullptr));
    const auto stoppedAt = camera->Pins().Statistics(0).delivered;
    EXPECT_HR(S_OK, camera->Pins().WaitForFrames(1, camera->Pins().Statistics(1).delivered + 50, kLongEnough));
    EXPECT_EQ(stoppedAt, camera->Pins().Statistics(0).delivered);
    camera->Pins().StopAll();
}

} // namespace
} // namespace tarn_sim
