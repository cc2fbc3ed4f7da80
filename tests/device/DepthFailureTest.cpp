// Every platform call, allocation and camera call fails in turn over a whole session: properties, each topology with
// frames, shutdown. A clean error, nothing left behind, no output that runs and gives nothing, and the next session on
// the same camera works.
#include <array>
#include <thread>
#include <utility>

#include "platform/ExtendedCameraControl.h"
#include "platform/RealTimeClientEx.h"

#include "device/TarnDepthDeviceMft.h"
#include "sim/CameraIdentifiers.h"
#include "tarn/depth_presets.h"
#include "tarn/tarn_dmft.h"
#include "tests/core/FailureSession.h"
#include "tests/device/FlatScene.h"
#include "tests/support/Expect.h"
#include "tests/support/GiveInput.h"
#include "media/MediaTypeParser.h"
#include "base/TakeReference.h"

using tarn_sim::SimulatedCamera;
using tarn_test::Failing;
using tarn_test::FailingPlatform;
using user_space_frameworks::MakeCom;

namespace
{

constexpr DWORD kDepth = 0;
constexpr DWORD kInfrared = 1;

struct Size
{
    UINT32 width;
    UINT32 height;
    UINT32 fps;
};

struct FaceLogin
{
    KSCAMERA_EXTENDEDPROP_HEADER header;
    KSCAMERA_EXTENDEDPROP_VALUE value;
};

struct EchoCommand
{
    KSPROPERTY_TARN_HW_COMMAND command;
    UINT32 data[2];
};

// Frame server and application of one session. Only what the transform does is counted and fails.
class Client : public tarn_sim::IFrameSink
{
  public:
    Client(IMFDeviceTransform *deviceTransform, SimulatedCamera *simulatedCamera)
        : transform(deviceTransform), camera(simulatedCamera)
    {
        const FailingPlatform::Pause pause;
        camera->Pins().SetFrameSink(this);
        EXPECT_HR(S_OK, transform.As(&events));
        EXPECT_HR(S_OK, transform.As(&control));
        ComPtr<IMFRealTimeClientEx> client;
        EXPECT_HR(S_OK, transform.As(&client));
        EXPECT_HR(S_OK, client->SetWorkQueueEx(WorkQueue(), 0));
    }
    ~Client() override
    {
        const FailingPlatform::Pause pause;
        camera->Pins().SetFrameSink(nullptr);
        camera->Pins().StopAll();
    }
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    void OnFrame(DWORD, IMFSample *sample) override
    {
        delivered = sample;
    }

    template <class Payload>
    HRESULT Property(const GUID &set, ULONG id, ULONG flags, Payload payload)
    {
        KSPROPERTY property{};
        property.Set = set;
        property.Id = id;
        property.Flags = flags;
        ULONG returned = 0;
        const HRESULT result = control->KsProperty(&property, sizeof(property), &payload, sizeof(payload), &returned);
        Pump();
        return result;
    }
    template <class Payload>
    HRESULT SetUnit(ULONG id, Payload payload)
    {
        return Property(KSPROPERTYSETID_TARN_DEPTH_CONTROL, id, KSPROPERTY_TYPE_SET, payload);
    }
    template <class Payload>
    HRESULT GetOwn(ULONG id, Payload payload)
    {
        return Property(KSPROPERTYSETID_TARN_DMFT_CONTROL, id, KSPROPERTY_TYPE_GET, payload);
    }
    template <class Payload>
    HRESULT SetOwn(ULONG id, Payload payload)
    {
        return Property(KSPROPERTYSETID_TARN_DMFT_CONTROL, id, KSPROPERTY_TYPE_SET, payload);
    }

    HRESULT SetFaceLogin(bool on)
    {
        FaceLogin mode{};
        mode.header.Flags = on ? KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_ALTERNATIVE_FRAME_ILLUMINATION
                               : KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_DISABLED;
        return Property(KSPROPERTYSETID_ExtendedCameraControl, KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE,
                        KSPROPERTY_TYPE_SET, mode);
    }

    HRESULT Run(DWORD output, const Size &size)
    {
        const bool ran = IsRunning(output);
        const HRESULT result = Change(output, size, DeviceStreamState_Run);
        if (SUCCEEDED(result))
        {
            sizes.at(output) = size;
        }
        // What failed to start is reported stopped; what ran before may run on as it was.
        EXPECT_TRUE(SUCCEEDED(result) ? IsRunning(output) : ran || !IsRunning(output));
        return result;
    }
    HRESULT Stop(DWORD output)
    {
        const HRESULT result = Change(output, sizes.at(output), DeviceStreamState_Stop);
        EXPECT_FALSE(IsRunning(output));
        return result;
    }
    HRESULT Flush()
    {
        return transform->ProcessMessage(MFT_MESSAGE_COMMAND_FLUSH, 0);
    }

    // Has the camera deliver frames and gives each to the transform. S_FALSE when one did not arrive: to a fault a
    // frame may be lost, but not two.
    HRESULT Stream(std::uint32_t frames)
    {
        std::uint32_t lost = 0;
        for (std::uint32_t i = 0; i < frames; ++i)
        {
            const auto frame = NextFrame();
            const HRESULT accepted = tarn_test::GiveInput(transform, 0, frame.Get());
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
        const FailingPlatform::Pause pause;
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
            EXPECT_HR(S_OK, tarn_test::GiveInput(transform, 0, frame.Get()));
            EXPECT_TRUE(HasReachedAll(frame));
        }
    }

  private:
    // One for all sessions: it is the pipeline's.
    static DWORD WorkQueue()
    {
        static const DWORD queue = [] {
            DWORD id = 0;
            EXPECT_HR(S_OK, MFAllocateWorkQueueEx(MF_MULTITHREADED_WORKQUEUE, &id));
            return id;
        }();
        return queue;
    }

    bool IsRunning(DWORD output)
    {
        const FailingPlatform::Pause pause;
        DeviceStreamState state = DeviceStreamState_Disabled;
        EXPECT_HR(S_OK, transform->GetOutputStreamState(output, &state));
        return state == DeviceStreamState_Run;
    }

    HRESULT Change(DWORD output, const Size &size, DeviceStreamState state)
    {
        const HRESULT result = transform->SetOutputStreamState(output, FindType(output, size).Get(), state, 0);
        Pump();
        return result;
    }

    ComPtr<IMFMediaType> FindType(DWORD output, const Size &size)
    {
        const FailingPlatform::Pause pause;
        ComPtr<IMFMediaType> type;
        for (DWORD index = 0; SUCCEEDED(transform->GetOutputAvailableType(output, index, &type)); ++index)
        {
            mft_utils::MediaTypeData data;
            EXPECT_HR(S_OK, mft_utils::MediaTypeParser::GetMediaTypeData(data, type.Get()));
            if (data.width == size.width && data.height == size.height && data.FPS() == size.fps)
            {
                return type;
            }
            type.Reset();
        }
        ADD_FAILURE() << "no type " << size.width << "x" << size.height << "@" << size.fps;
        return nullptr;
    }

    // Answers the transform's events.
    void Pump()
    {
        ComPtr<IMFMediaEvent> event;
        while (events->GetEvent(MF_EVENT_FLAG_NO_WAIT, event.ReleaseAndGetAddressOf()) == S_OK)
        {
            MediaEventType type = MEUnknown;
            event->GetType(&type);
            DeviceStreamState state = DeviceStreamState_Stop;
            ComPtr<IMFMediaType> preferred;
            if (type == METransformInputStreamStateChanged &&
                SUCCEEDED(transform->GetInputStreamPreferredState(0, &state, &preferred)))
            {
                EXPECT_HR(S_OK, transform->SetInputStreamState(0, preferred.Get(), state, 0));
                const FailingPlatform::Pause pause;
                EXPECT_HR(S_OK, camera->Pins().SetPinState(0, state, preferred.Get()));
            }
        }
    }

    ComPtr<IMFSample> NextFrame()
    {
        const FailingPlatform::Suspension suspension; // the camera's own work
        EXPECT_HR(S_OK, camera->Pins().Step(0, 1));
        return std::exchange(delivered, nullptr);
    }

    // Takes what comes until the transform has let go of the frame: one sample for each output that runs.
    bool HasReachedAll(const ComPtr<IMFSample> &frame)
    {
        const FailingPlatform::Pause pause;
        std::array<int, 2> arrived{};
        const ULONGLONG end = GetTickCount64() + 5000;
        for (bool isDone = false; !isDone; std::this_thread::yield())
        {
            if (GetTickCount64() > end)
            {
                ADD_FAILURE() << "the transform does not let go of the frame";
                return false;
            }
            isDone = tarn_test::ReferenceCount(frame) == 1;
            for (const DWORD output : {kDepth, kInfrared})
            {
                MFT_OUTPUT_DATA_BUFFER buffer{};
                buffer.dwStreamID = output;
                DWORD status = 0;
                transform->ProcessOutput(0, 1, &buffer, &status);
                ComPtr<IMFSample> sample;
                user_space_frameworks::TakeReference(sample, buffer.pSample);
                if (sample)
                {
                    ++arrived.at(output);
                    ExpectLength(output, sample);
                }
            }
        }
        EXPECT_LE(arrived[kDepth], IsRunning(kDepth) ? 1 : 0);
        EXPECT_LE(arrived[kInfrared], IsRunning(kInfrared) ? 1 : 0);
        return arrived[kDepth] == (IsRunning(kDepth) ? 1 : 0) && arrived[kInfrared] == (IsRunning(kInfrared) ? 1 : 0);
    }

    void ExpectLength(DWORD output, const ComPtr<IMFSample> &sample)
    {
        DWORD length = 0;
        EXPECT_HR(S_OK, sample->GetTotalLength(&length));
        const DWORD pixels = sizes.at(output).width * sizes.at(output).height;
        // Depth with confidence keeps the buffer of both planes.
        EXPECT_TRUE(length == pixels * (output == kDepth ? 2 : 1) || (output == kDepth && length == pixels * 4))
            << "output " << output << ": " << length << " bytes";
    }

    const ComPtr<IMFDeviceTransform> transform;
    SimulatedCamera *const camera;
    ComPtr<IMFMediaEventGenerator> events;
    ComPtr<IKsControl> control;
    std::array<Size, 2> sizes{};
    ComPtr<IMFSample> delivered;
};

// S_FALSE when a frame was lost on the way.
HRESULT UseEverything(Client &client)
{
    EchoCommand echo{{tarn_sim::kOpcodeEcho, sizeof(EchoCommand::data), 1, 2, 3, 4}, {5, 6}};
    const Size faceLogin{360, 360, 60};
    const Size small{320, 240, 30};
    const std::function<HRESULT()> steps[] = {
        [&] { return client.GetOwn(KSPROPERTY_TARN_DMFT_CONTROL_API_VERSION, KSPROPERTY_TARN_API_VERSION{}); },
        [&] { return client.SetOwn(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, UINT32{TARN_DEPTH_PRESET_CLOSE_UP}); },
        [&] { return client.SetOwn(KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND, echo); },
        [&] { return client.GetOwn(KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND, echo); },
        [&] { return client.SetUnit(tarn_sim::kControlLaserPower, BYTE{3}); },
        [&] { return client.SetFaceLogin(true); },
        [&] { return client.Run(kInfrared, faceLogin); },
        [&] { return client.Stream(1); },
        [&] { return client.Run(kDepth, small); }, // ends face login
        [&] { return client.Run(kInfrared, small); },
        [&] { return client.Stream(2); },
        [&] { return client.Flush(); },
        [&] { return client.Stop(kInfrared); },
        [&] { return client.SetOwn(KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP, UINT32{1}); },
        [&] { return client.Stream(2); },
        [&] { return client.SetOwn(KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP, UINT32{0}); },
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
    const Size small{320, 240, 30};
    EXPECT_HR(S_OK, client.Run(kDepth, small));
    EXPECT_HR(S_OK, client.Run(kInfrared, small));
    return client.Stream(1);
}

tarn_test::Session SessionThat(HRESULT (*use)(Client &client))
{
    return [use](SimulatedCamera *camera) {
        return tarn_test::RunSession([] { return MakeCom<mft_core::TarnDepthDeviceMft>(); }, camera,
                                     [&](IMFDeviceTransform *transform) {
                                         Client client(transform, camera);
                                         const HRESULT result = use(client);
                                         client.ExpectNoStall();
                                         return result;
                                     });
    };
}

const tarn_test::Sessions kSessions{SessionThat(UseEverything), SessionThat(UseBothOutputs)};

ComPtr<SimulatedCamera> SteppedTarnDepth()
{
    auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
    configuration.pacing = tarn_sim::Pacing::Stepped;
    configuration.frameSource = std::make_shared<tarn_test::FlatScene>();
    return MakeCom<SimulatedCamera>(configuration);
}

TEST(DepthFailureTest, EveryPlatformCallMayFail)
{
    const auto camera = SteppedTarnDepth();
    EXPECT_GT(tarn_test::FailEachInTurn(Failing::PlatformCall, camera.Get(), kSessions), 30);
}

TEST(DepthFailureTest, EveryAllocationMayFail)
{
    const auto camera = SteppedTarnDepth();
    EXPECT_GT(tarn_test::FailEachInTurn(Failing::Allocation, camera.Get(), kSessions), 100);
}

TEST(DepthFailureTest, EveryKsCallMayFail)
{
    const auto camera = SteppedTarnDepth();
    EXPECT_GT(tarn_test::FailEachCameraCall(tarn_test::kKsCalls, camera.Get(), kSessions), 60);
}

TEST(DepthFailureTest, EveryCallOfTheCamerasFilterAndItsTopologyMayFail)
{
    const auto camera = SteppedTarnDepth();
    EXPECT_GT(tarn_test::FailEachCameraCall(tarn_test::kTransformCalls, camera.Get(), kSessions), 10);
    EXPECT_GT(tarn_test::FailEachCameraCall(tarn_test::kTopologyCalls, camera.Get(), kSessions), 0);
}

} // namespace
