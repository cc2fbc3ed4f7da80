#include "core/PassThroughDeviceMft.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "tests/core/TestParts.h"
#include "tests/support/HandleCount.h"
#include "tests/support/TestFrameServer.h"

using mft_core::PassThroughDeviceMft;
using tarn_sim::CameraConfiguration;
using tarn_sim::SimulatedCamera;
using tarn_test::SteppedCamera;
using tarn_test::TestFrameServer;
using tarn_test::TimeOf;
using user_space_frameworks::MakeCom;

namespace
{

ComPtr<IMFDeviceTransform> NewTransform()
{
    return MakeCom<PassThroughDeviceMft>("Test DMFT");
}

TEST(PassThroughDeviceMftTest, FramesTravelUnchangedAndInOrder)
{
    TestFrameServer server(NewTransform(), SteppedCamera(2));
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.Start(1));
    EXPECT_EQ(1, server.createdEvents[0]);
    EXPECT_EQ(1, server.createdEvents[1]);
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 10));
    ASSERT_HR(S_OK, server.camera->Pins().Step(1, 3));
    server.Pump();
    EXPECT_EQ(13, server.haveOutputEvents);

    const auto samples = server.CollectAll(0);
    ASSERT_EQ(10u, samples.size());
    for (std::size_t i = 1; i < samples.size(); ++i)
    {
        EXPECT_LT(TimeOf(samples[i - 1]), TimeOf(samples[i]));
    }
    EXPECT_EQ(3u, server.CollectAll(1).size());
    EXPECT_EQ(64u * 48u * 2u, tarn_test::PixelsOf(samples.front()).size());
}

TEST(PassThroughDeviceMftTest, AStoppedOutputStopsItsPinAndAnswersNothing)
{
    TestFrameServer server(NewTransform(), SteppedCamera());
    ASSERT_HR(S_OK, server.Start(0));
    EXPECT_EQ(DeviceStreamState_Run, server.camera->Pins().GetPinState(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 2));
    ASSERT_HR(S_OK, server.Stop(0));
    EXPECT_EQ(DeviceStreamState_Stop, server.OutputState(0));
    EXPECT_EQ(DeviceStreamState_Stop, server.camera->Pins().GetPinState(0));
    MFT_OUTPUT_DATA_BUFFER buffer{};
    DWORD status = 0;
    EXPECT_HR(S_OK, server.transform->ProcessOutput(0, 1, &buffer, &status)); // served, without a sample
    EXPECT_EQ(nullptr, buffer.pSample);
    EXPECT_HR(S_OK, server.camera->Pins().WaitForReturnOfFrames(std::chrono::seconds(5)));

    // Frames of a camera that does not stop are dropped and never announced.
    server.haveOutputEvents = 0;
    const auto late = tarn_test::MakeSample(1);
    server.OnFrame(0, late.Get());
    server.Pump();
    EXPECT_EQ(0, server.haveOutputEvents);
    EXPECT_REFS(late, 1);
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    EXPECT_EQ(1u, server.CollectAll(0).size());
}

TEST(PassThroughDeviceMftTest, TheSameStateAndTypeChangeNothingAnotherTypeRestarts)
{
    TestFrameServer server(NewTransform(), SteppedCamera());
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 2));
    ASSERT_HR(S_OK, server.Start(0)); // unchanged
    EXPECT_EQ(1, server.createdEvents[0]);
    ASSERT_HR(S_OK, server.Start(0, 1)); // the pin's other type
    EXPECT_EQ(2, server.createdEvents[0]);
    EXPECT_TRUE(server.CollectAll(0).empty()) << "a frame of the former type was left";
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    EXPECT_EQ(1u, server.CollectAll(0).size());
    ComPtr<IMFMediaType> current;
    EXPECT_HR(S_OK, server.transform->GetInputCurrentType(0, &current));
    EXPECT_EQ("L16 64x48@30", tarn_host::FrameFormat::Of(*current.Get()).ToText());
}

TEST(PassThroughDeviceMftTest, ARefusedTypeLeavesTheRunningStreamAsItIs)
{
    TestFrameServer server(NewTransform(), SteppedCamera());
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    const auto other = tarn_sim::MakeVideoType(MFVideoFormat_D16, 320, 200, 30);
    EXPECT_HR(MF_E_INVALIDMEDIATYPE, server.transform->SetOutputStreamState(0, other.Get(), DeviceStreamState_Run, 0));
    EXPECT_EQ(DeviceStreamState_Run, server.OutputState(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    EXPECT_EQ(2u, server.CollectAll(0).size());
    EXPECT_HR(S_OK, server.transform->SetOutputStreamState(0, other.Get(), DeviceStreamState_Pause, 0));
    EXPECT_HR(S_OK, server.transform->SetOutputStreamState(0, other.Get(), DeviceStreamState_Disabled, 0));
    EXPECT_EQ(DeviceStreamState_Run, server.OutputState(0)); // pause and disable are ignored
}

TEST(PassThroughDeviceMftTest, TheCamerasOwnRefusalOfTheListenerFailsTheStart)
{
    TestFrameServer server(NewTransform(), SteppedCamera(2));
    tarn_sim::FaultPlan faults;
    faults.ksCall = {1, E_UNEXPECTED}; // not that the listener runs already
    server.camera->Faults().SetPlan(faults);
    EXPECT_HR(E_UNEXPECTED, server.Start(0));
    EXPECT_EQ(DeviceStreamState_Stop, server.OutputState(0));
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.Start(1)); // which is what it then does
    EXPECT_EQ(1u, server.camera->Ks().EventListenerCount());
}

TEST(PassThroughDeviceMftTest, FlushEmptiesTheQueuesAndTheStreamRunsOn)
{
    TestFrameServer server(NewTransform(), SteppedCamera());
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 3));
    EXPECT_HR(S_OK, server.transform->ProcessMessage(MFT_MESSAGE_COMMAND_FLUSH, 0));
    EXPECT_TRUE(server.CollectAll(0).empty());
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 2));
    EXPECT_HR(S_OK, server.transform->FlushOutputStream(0, 0));
    EXPECT_TRUE(server.CollectAll(0).empty());
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    EXPECT_EQ(1u, server.CollectAll(0).size());
}

TEST(PassThroughDeviceMftTest, ProcessInputConsumesWhatTheBuildSaysWhateverItsResult)
{
    TestFrameServer server(NewTransform(), SteppedCamera());
    const auto give = [&](DWORD streamId, const ComPtr<IMFSample> &sample, ULONG forwarded) {
        sample.Get()->AddRef();
        const HRESULT result = server.transform->ProcessInput(streamId, sample.Get(), 0);
        EXPECT_REFS(sample, 2 - tarn_test::kReferencesConsumed + forwarded);
        return result;
    };
    EXPECT_HR(S_OK, give(0, tarn_test::MakeSample(1), 0)); // nothing runs
    ASSERT_HR(S_OK, server.Start(0));
    const auto delivered = tarn_test::MakeSample(2);
    EXPECT_HR(S_OK, give(0, delivered, 1)); // the queue's
    const auto collected = server.Collect(0);
    EXPECT_EQ(delivered.Get(), collected.Get());
    EXPECT_REFS(delivered, 3 - tarn_test::kReferencesConsumed); // exactly one handed out
    EXPECT_HR(E_FAIL, give(7, tarn_test::MakeSample(3), 0));
    ComPtr<IMFSample> timeless;
    ASSERT_HR(S_OK, MFCreateSample(&timeless));
    EXPECT_HR(MF_E_NO_SAMPLE_TIMESTAMP, give(0, timeless, 0));
    EXPECT_HR(S_OK, server.ShutDown());
    EXPECT_HR(S_OK, give(0, tarn_test::MakeSample(4), 0));
}

// Start, stop, flush and shutdown while the capture thread delivers as fast as it can and a consumer collects.
TEST(PassThroughDeviceMftTest, StateChangesWithFramesInFlightLeaveNothingBehind)
{
    int handlesBefore = 0;
    for (int round = 0; round < 120; ++round)
    {
        auto configuration = CameraConfiguration::GenericDepth16(16, 16, 30);
        configuration.pacing = tarn_sim::Pacing::AsFastAsTaken;
        auto camera = MakeCom<SimulatedCamera>(configuration);
        {
            TestFrameServer server(NewTransform(), camera);
            std::atomic<bool> done{false};
            std::thread consumer([&] {
                while (!done)
                {
                    if (!server.Collect(0))
                    {
                        std::this_thread::yield();
                    }
                }
            });
            for (int change = 0; change < 4; ++change)
            {
                ASSERT_HR(S_OK, server.Start(0, static_cast<DWORD>(change % 2)));
                ASSERT_HR(S_OK, camera->Pins().WaitForFrames(0, camera->Pins().Statistics(0).delivered + 3,
                                                             std::chrono::seconds(10)));
                EXPECT_HR(S_OK, server.transform->ProcessMessage(MFT_MESSAGE_COMMAND_FLUSH, 0));
                if (change == 2)
                {
                    ASSERT_HR(S_OK, server.Stop(0));
                }
            }
            if (round % 2 == 0) // every other round ends with frames in flight
            {
                EXPECT_HR(S_OK, server.ShutDown());
            }
            done = true;
            consumer.join();
        }
        EXPECT_HR(S_OK, camera->Pins().WaitForReturnOfFrames(std::chrono::seconds(5)));
        EXPECT_REFS(camera, 1);
        camera.Reset();
        if (round == 20) // by then the platform has made its own threads
        {
            handlesBefore = tarn_test::CountHandles();
        }
    }
    // The platform's thread pool comes and goes by a few.
    EXPECT_TRUE(tarn_test::WaitUntil([&] { return tarn_test::CountHandles() <= handlesBefore + 12; }))
        << handlesBefore << " -> " << tarn_test::CountHandles();
}

} // namespace
