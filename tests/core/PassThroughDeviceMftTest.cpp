#include "core/PassThroughDeviceMft.h"

#include "tests/core/TestParts.h"
#include "tests/support/HandleCount.h"
#include "tests/support/TestFrameServer.h"

using namespace tarn_sim;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

struct Server : TestFrameServer
{
    explicit Server(const ComPtr<SimulatedCamera> &simulated)
        : TestFrameServer(MakeCom<mft_core::PassThroughDeviceMft>("Test DMFT"), simulated)
    {
    }
};

class PassThroughDeviceMftTest : public testing::Test
{
  protected:
    Server server{SteppedCamera(2)};
};

TEST_F(PassThroughDeviceMftTest, FramesTravelUnchangedAndInOrder)
{
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.Start(1));
    EXPECT_EQ(1, server.createdEvents[0]);
    EXPECT_EQ(1, server.createdEvents[1]);
    server.Step(10);
    server.Step(3, 1);
    server.Pump();
    EXPECT_EQ(13, server.haveOutputEvents);

    const auto samples = server.CollectAll(0);
    ASSERT_EQ(10u, samples.size());
    for (std::size_t i = 1; i < samples.size(); ++i)
    {
        EXPECT_LT(TimeOf(samples[i - 1]), TimeOf(samples[i]));
    }
    EXPECT_EQ(3u, server.CollectAll(1).size());
    EXPECT_EQ(64u * 48u * 2u, BytesOf(samples.front()).size());
}

TEST_F(PassThroughDeviceMftTest, AStoppedOutputStopsItsPinAndAnswersNothing)
{
    ASSERT_HR(S_OK, server.Start(0));
    EXPECT_EQ(DeviceStreamState_Run, server.camera->Pins().GetPinState(0));
    server.Step(2);
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
    const auto late = MakeSample(1);
    server.OnFrame(0, late.Get());
    server.Pump();
    EXPECT_EQ(0, server.haveOutputEvents);
    EXPECT_REFS(late, 1);
    ASSERT_HR(S_OK, server.Start(0));
    server.Step(1);
    EXPECT_EQ(1u, server.CollectAll(0).size());
}

TEST_F(PassThroughDeviceMftTest, TheSameStateAndTypeChangeNothingAnotherTypeRestarts)
{
    ASSERT_HR(S_OK, server.Start(0));
    server.Step(2);
    ASSERT_HR(S_OK, server.Start(0)); // unchanged
    EXPECT_EQ(1, server.createdEvents[0]);
    ASSERT_HR(S_OK, server.Start(0, 1)); // the pin's other type
    EXPECT_EQ(2, server.createdEvents[0]);
    EXPECT_TRUE(server.CollectAll(0).empty()) << "a frame of the former type was left";
    server.Step(1);
    EXPECT_EQ(1u, server.CollectAll(0).size());
    ComPtr<IMFMediaType> current;
    EXPECT_HR(S_OK, server.transform->GetInputCurrentType(0, &current));
    EXPECT_EQ("L16 64x48@30", tarn_host::FrameFormat::Of(*current.Get()).ToText());
}

TEST_F(PassThroughDeviceMftTest, ARefusedTypeLeavesTheRunningStreamAsItIs)
{
    ASSERT_HR(S_OK, server.Start(0));
    server.Step(1);
    const auto other = MakeVideoType(MFVideoFormat_D16, 320, 200, 30);
    EXPECT_HR(MF_E_INVALIDMEDIATYPE, server.transform->SetOutputStreamState(0, other.Get(), DeviceStreamState_Run, 0));
    EXPECT_EQ(DeviceStreamState_Run, server.OutputState(0));
    server.Step(1);
    EXPECT_EQ(2u, server.CollectAll(0).size());
    EXPECT_HR(S_OK, server.transform->SetOutputStreamState(0, other.Get(), DeviceStreamState_Pause, 0));
    EXPECT_HR(S_OK, server.transform->SetOutputStreamState(0, other.Get(), DeviceStreamState_Disabled, 0));
    EXPECT_EQ(DeviceStreamState_Run, server.OutputState(0)); // pause and disable are ignored
}

TEST_F(PassThroughDeviceMftTest, TheCamerasOwnRefusalOfTheListenerFailsTheStart)
{
    FaultPlan faults;
    faults.ksCall = {1, E_UNEXPECTED}; // not that the listener runs already
    server.camera->Faults().SetPlan(faults);
    EXPECT_HR(E_UNEXPECTED, server.Start(0));
    EXPECT_EQ(DeviceStreamState_Stop, server.OutputState(0));
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.Start(1)); // which is what it then does
    EXPECT_EQ(1u, server.camera->Ks().EventListenerCount());
}

TEST_F(PassThroughDeviceMftTest, FlushEmptiesTheQueuesAndTheStreamRunsOn)
{
    ASSERT_HR(S_OK, server.Start(0));
    server.Step(3);
    EXPECT_HR(S_OK, server.transform->ProcessMessage(MFT_MESSAGE_COMMAND_FLUSH, 0));
    EXPECT_TRUE(server.CollectAll(0).empty());
    server.Step(2);
    EXPECT_HR(S_OK, server.transform->FlushOutputStream(0, 0));
    EXPECT_TRUE(server.CollectAll(0).empty());
    server.Step(1);
    EXPECT_EQ(1u, server.CollectAll(0).size());
}

TEST_F(PassThroughDeviceMftTest, ProcessInputConsumesWhatTheBuildSaysWhateverItsResult)
{
    const auto give = [&](DWORD streamId, const ComPtr<IMFSample> &sample, ULONG forwarded) {
        sample.Get()->AddRef();
        const HRESULT result = server.transform->ProcessInput(streamId, sample.Get(), 0);
        EXPECT_REFS(sample, 2 - kReferencesConsumed + forwarded);
        return result;
    };
    EXPECT_HR(S_OK, give(0, MakeSample(1), 0)); // nothing runs
    ASSERT_HR(S_OK, server.Start(0));
    const auto delivered = MakeSample(2);
    EXPECT_HR(S_OK, give(0, delivered, 1)); // the queue's
    const auto collected = server.Collect(0);
    EXPECT_EQ(delivered.Get(), collected.Get());
    EXPECT_REFS(delivered, 3 - kReferencesConsumed); // exactly one handed out
    EXPECT_HR(E_FAIL, give(7, MakeSample(3), 0));
    ComPtr<IMFSample> timeless;
    ASSERT_HR(S_OK, MFCreateSample(&timeless));
    EXPECT_HR(MF_E_NO_SAMPLE_TIMESTAMP, give(0, timeless, 0));
    EXPECT_HR(S_OK, server.ShutDown());
    EXPECT_HR(S_OK, give(0, MakeSample(4), 0));
}

// Start, stop, flush and shutdown while the capture thread delivers as fast as it can and a consumer collects.
TEST_F(PassThroughDeviceMftTest, StateChangesWithFramesInFlightLeaveNothingBehind)
{
    int handlesBefore = 0;
    for (int round = 0; round < 120; ++round)
    {
        auto configuration = CameraConfiguration::GenericDepth16(16, 16, 30);
        configuration.pacing = Pacing::AsFastAsTaken;
        auto camera = MakeCom<SimulatedCamera>(configuration);
        {
            Server flooded(camera);
            std::optional<Repeating> consumer(std::in_place, [&] { flooded.Collect(0); });
            for (int change = 0; change < 4; ++change)
            {
                ASSERT_HR(S_OK, flooded.Start(0, static_cast<DWORD>(change % 2)));
                ASSERT_HR(S_OK, camera->Pins().WaitForFrames(0, camera->Pins().Statistics(0).delivered + 3,
                                                             std::chrono::seconds(10)));
                EXPECT_HR(S_OK, flooded.transform->ProcessMessage(MFT_MESSAGE_COMMAND_FLUSH, 0));
                if (change == 2)
                {
                    ASSERT_HR(S_OK, flooded.Stop(0));
                }
            }
            if (round % 2 == 0) // every other round ends with frames in flight
            {
                EXPECT_HR(S_OK, flooded.ShutDown());
            }
            consumer.reset();
        }
        EXPECT_HR(S_OK, camera->Pins().WaitForReturnOfFrames(std::chrono::seconds(5)));
        EXPECT_REFS(camera, 1);
        camera.Reset();
        if (round == 20) // by then the platform has made its own threads
        {
            handlesBefore = CountHandles();
        }
    }
    // The platform's thread pool comes and goes by a few.
    EXPECT_TRUE(WaitUntil([&] { return CountHandles() <= handlesBefore + 12; }))
        << handlesBefore << " -> " << CountHandles();
}

} // namespace
