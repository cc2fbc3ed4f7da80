// Every platform call, allocation and camera call fails in turn over a whole session: properties, each topology with
// frames, shutdown. A clean error, nothing left behind, no output that runs and gives nothing, and the next session on
// the same camera works.

#include "device/TarnDepthDeviceMft.h"
#include "tarn/depth_presets.h"
#include "tests/core/FailureSession.h"
#include "tests/device/DepthFrameServer.h"
#include "tests/device/FlatScene.h"

using namespace tarn_sim;
using namespace tarn_test;
using tarn_host::VideoSize;
using user_space_frameworks::MakeCom;

namespace
{

struct EchoCommand
{
    KSPROPERTY_TARN_HW_COMMAND command;
    UINT32 data[2];
};

// Frame server and application of one session.
class Client : public DepthFrameServer
{
  public:
    using DepthFrameServer::DepthFrameServer;

    void OnFrame(DWORD, IMFSample *sample) override { delivered = sample; }

    template <class Payload>
    HRESULT Own(ULONG id, ULONG flags, Payload payload)
    {
        const HRESULT result = SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, id, flags, &payload, sizeof(payload));
        Pump();
        return result;
    }

    HRESULT Run(DWORD output, const VideoSize &size)
    {
        const bool ran = IsRunning(output);
        const HRESULT result = Change(output, FindType(output, size), DeviceStreamState_Run);
        // What failed to start is reported stopped; what ran before may run on as it was.
        EXPECT_TRUE(SUCCEEDED(result) ? IsRunning(output) : ran || !IsRunning(output));
        return result;
    }
    HRESULT Stop(DWORD output)
    {
        const HRESULT result = DepthFrameServer::Stop(output);
        EXPECT_FALSE(IsRunning(output));
        return result;
    }

    // Has the camera deliver frames and gives each to the transform. S_FALSE when one did not arrive: to a fault a
    // frame may be lost, but not two.
    HRESULT Stream(std::uint32_t frames)
    {
        std::uint32_t lost = 0;
        for (std::uint32_t i = 0; i < frames; ++i)
        {
            const auto frame = NextFrame();
            const HRESULT accepted = GiveInput(transform, 0, frame.Get());
            lost += HasReachedAll(frame) ? 0 : 1;
            if (FAILED(accepted))
            {
                return accepted;
            }
        }
        EXPECT_LE(lost, 1u);
        return lost == 0 ? S_OK : S_FALSE;
    }

    // What still runs, after whatever happened, gives frames.
    void ExpectNoStall()
    {
        const OwnWork own;
        const FailingPlatform::Suspension suspension;
        Pump();
        if (!IsRunning(kDepth) && !IsRunning(kInfrared))
        {
            EXPECT_EQ(DeviceStreamState_Stop, camera->Pins().GetPinState(0));
            // A camera whose own calls fail may refuse to forget the listener.
            EXPECT_TRUE(camera->Ks().EventListenerCount() == 0 || !FailingPlatform::LeavesTheCameraAlone());
        }
        else
        {
            ASSERT_EQ(DeviceStreamState_Run, camera->Pins().GetPinState(0));
            const auto frame = NextFrame();
            EXPECT_HR(S_OK, GiveInput(transform, 0, frame.Get()));
            EXPECT_TRUE(HasReachedAll(frame));
        }
    }

  private:
    bool IsRunning(DWORD output) { return OutputState(output) == DeviceStreamState_Run; }

    ComPtr<IMFSample> NextFrame()
    {
        const FailingPlatform::Suspension suspension; // the camera's own work
        EXPECT_HR(S_OK, camera->Pins().Step(0, 1));
        return std::exchange(delivered, nullptr);
    }

    // Takes what comes until the transform has let go of the frame: one sample for each output that runs.
    bool HasReachedAll(const ComPtr<IMFSample> &frame)
    {
        const OwnWork own;
        std::array<int, 2> arrived{};
        EXPECT_TRUE(WaitUntil([&] {
            const bool isDone = ReferenceCount(frame) == 1;
            for (const DWORD output : {kDepth, kInfrared})
            {
                arrived.at(output) += static_cast<int>(CollectAll(output).size());
            }
            return isDone;
        })) << "the transform does not let go of the frame";
        const std::array<int, 2> expected{IsRunning(kDepth) ? 1 : 0, IsRunning(kInfrared) ? 1 : 0};
        EXPECT_LE(arrived[kDepth], expected[kDepth]);
        EXPECT_LE(arrived[kInfrared], expected[kInfrared]);
        return arrived == expected;
    }

    ComPtr<IMFSample> delivered;
};

// S_FALSE when a frame was lost on the way.
HRESULT UseEverything(Client &client)
{
    constexpr ULONG kGet = KSPROPERTY_TYPE_GET;
    constexpr ULONG kSet = KSPROPERTY_TYPE_SET;
    const EchoCommand echo{{kOpcodeEcho, sizeof(EchoCommand::data), 1, 2, 3, 4}, {5, 6}};
    const VideoSize small{320, 240, 30};
    BYTE laser = 3;
    const std::function<HRESULT()> steps[] = {
        [&] { return client.Own(KSPROPERTY_TARN_DMFT_CONTROL_API_VERSION, kGet, KSPROPERTY_TARN_API_VERSION{}); },
        [&] {
            return client.Own(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, kSet, UINT32{TARN_DEPTH_PRESET_CLOSE_UP});
        },
        [&] { return client.Own(KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND, kSet, echo); },
        [&] { return client.Own(KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND, kGet, echo); },
        [&] { return client.SendProperty(KSPROPERTYSETID_TARN_DEPTH_CONTROL, kControlLaserPower, kSet, &laser, 1); },
        [&] { return client.SetFaceLogin(true); },
        [&] {
            return client.Run(kInfrared, {360, 360, 60});
        },
        [&] { return client.Stream(1); },
        [&] { return client.Run(kDepth, small); }, // ends face login
        [&] { return client.Run(kInfrared, small); },
        [&] { return client.Stream(2); },
        [&] { return client.transform->ProcessMessage(MFT_MESSAGE_COMMAND_FLUSH, 0); },
        [&] { return client.Stop(kInfrared); },
        [&] { return client.SetConfidenceMap(true); },
        [&] { return client.Stream(2); },
        [&] { return client.SetConfidenceMap(false); },
        [&] { return client.Stream(1); },
        [&] { return client.Stop(kDepth); },
        [&] { return client.Run(kDepth, small); }, // and shutdown while it runs
    };
    bool isFrameLost = false;
    for (const auto &step : steps)
    {
        const HRESULT result = step();
        if (FAILED(result))
        {
            return result;
        }
        isFrameLost = isFrameLost || result == S_FALSE;
    }
    return isFrameLost ? S_FALSE : S_OK;
}

HRESULT UseBothOutputs(Client &client)
{
    EXPECT_HR(S_OK, client.Run(kDepth, {320, 240, 30}));
    EXPECT_HR(S_OK, client.Run(kInfrared, {320, 240, 30}));
    return client.Stream(1);
}

Session SessionThat(HRESULT (*use)(Client &client))
{
    return [use](SimulatedCamera *camera) {
        Client client(MakeCom<mft_core::TarnDepthDeviceMft>(), camera);
        HRESULT result = client.initialized;
        if (SUCCEEDED(result))
        {
            result = use(client);
            client.ExpectNoStall();
        }
        const HRESULT ended = client.ShutDown();
        return FAILED(result) ? result : ended;
    };
}

const Sessions kSessions{SessionThat(UseEverything), SessionThat(UseBothOutputs)};

ComPtr<SimulatedCamera> Camera()
{
    return MakeCom<SimulatedCamera>(
        Client::SteppedTarnDepth([](auto &camera) { camera.frameSource = std::make_shared<FlatScene>(); }));
}

TEST(DepthFailureTest, EveryPlatformCallMayFail)
{
    const auto camera = Camera();
    EXPECT_GT(FailEachInTurn(Failing::PlatformCall, camera.Get(), kSessions), 30);
}

TEST(DepthFailureTest, EveryAllocationMayFail)
{
    const auto camera = Camera();
    EXPECT_GT(FailEachInTurn(Failing::Allocation, camera.Get(), kSessions), 100);
}

TEST(DepthFailureTest, EveryKsCallMayFail)
{
    const auto camera = Camera();
    EXPECT_GT(FailEachCameraCall(kKsCalls, camera.Get(), kSessions), 60);
}

TEST(DepthFailureTest, EveryCallOfTheCamerasFilterAndItsTopologyMayFail)
{
    const auto camera = Camera();
    EXPECT_GT(FailEachCameraCall(kTransformCalls, camera.Get(), kSessions), 10);
    EXPECT_GT(FailEachCameraCall(kTopologyCalls, camera.Get(), kSessions), 0);
}

} // namespace
